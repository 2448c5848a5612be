#pragma once
/// @file
/// URL components with ordered query items, the starting point of every request.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvix {

/// One query item. A value that is absent is written as the bare name ("name"),
/// an empty value as "name=".
struct QueryItem {
  /// The item's name.
  std::string name;
  /// The item's value; nothing for a name alone.
  std::optional<std::string> value;

  /// Member-wise equality.
  friend bool operator==(const QueryItem&, const QueryItem&) = default;
};

/// The parts of a URL that the engine builds requests from. Query items keep
/// the order in which they were added; names and values are stored decoded and
/// percent-encoded losslessly when the URL is written (every byte outside
/// `A-Z a-z 0-9 - . _ ~` is escaped, so a blank is "%20" and "+" is "%2B").
class URLComponents {
 public:
  URLComponents() = default;

  /// Parses an absolute URL; nothing when it has no scheme or cannot be read.
  static std::optional<URLComponents> parse(std::string_view url);

  /// The scheme ("https").
  const std::string& scheme() const { return scheme_; }
  /// Replaces `scheme()`.
  void setScheme(std::string scheme) { scheme_ = std::move(scheme); }
  /// The host name.
  const std::string& host() const { return host_; }
  /// Replaces `host()`.
  void setHost(std::string host) { host_ = std::move(host); }
  /// The port, when one is written in the URL.
  std::optional<int> port() const { return port_; }
  /// Replaces `port()`.
  void setPort(std::optional<int> port) { port_ = port; }
  /// The decoded path; empty or starting with "/".
  const std::string& path() const { return path_; }
  /// Replaces `path()`.
  void setPath(std::string path) { path_ = std::move(path); }
  /// Appends a path piece as it stands ("/api/widget/v1/q.js").
  void appendPath(std::string_view piece) { path_.append(piece); }

  /// The query items, in order.
  const std::vector<QueryItem>& queryItems() const { return queryItems_; }
  /// Replaces every query item.
  void setQueryItems(std::vector<QueryItem> items) { queryItems_ = std::move(items); }
  /// Appends one query item after the existing ones.
  void appendQueryItem(std::string name, std::optional<std::string> value);
  /// Removes every query item of that name.
  void removeQueryItems(std::string_view name);
  /// The value of the first item of that name (absent when there is none or it has no value).
  std::optional<std::string> queryValue(std::string_view name) const;

  /// The encoded query string without "?" (empty when there are no items).
  std::string percentEncodedQuery() const;
  /// The whole URL, encoded.
  std::string string() const;

 private:
  std::string scheme_;
  std::string host_;
  std::optional<int> port_;
  std::string path_;
  std::vector<QueryItem> queryItems_;
};

/// The items of an encoded query string (without "?"): split at "&", each
/// piece at its first "=" (a piece without one is a name without value),
/// names and values percent-decoded ("+" stays "+"; an escape that is not one
/// stays as written). An empty query has no items.
std::vector<QueryItem> queryItemsOf(std::string_view encodedQuery);

/// Percent-encodes every byte outside `A-Z a-z 0-9 - . _ ~`.
std::string percentEncode(std::string_view text);

}  // namespace quorvix
