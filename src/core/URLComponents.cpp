#include "quorvix/core/URLComponents.h"

#include <algorithm>
#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

#include "core/Encoding.h"

namespace quorvix {
namespace {

using detail::BadEscape;

// Percent-decodes one query name or value; an escape that is not one stays as written.
std::string decodedComponent(std::string_view text) { return *detail::percentDecoded(text, BadEscape::keep); }

}  // namespace

std::string percentEncode(std::string_view text) { return detail::percentEncoded(text, detail::kUnreservedBytes); }

std::optional<URLComponents> URLComponents::parse(std::string_view url) {
  auto parsed = boost::urls::parse_uri(url);
  if (!parsed) return std::nullopt;
  const boost::urls::url_view view = *parsed;
  URLComponents components;
  components.scheme_ = view.scheme();
  components.host_ = view.host();
  if (view.has_port() && !view.port().empty()) components.port_ = static_cast<int>(view.port_number());
  components.path_ = view.path();
  // The query is read here rather than through the library's parameter view,
  // which misreads an empty query before a fragment ("a://b?#c").
  if (view.has_query()) components.queryItems_ = queryItemsOf(view.encoded_query());
  return components;
}

std::vector<QueryItem> queryItemsOf(std::string_view encodedQuery) {
  std::vector<QueryItem> items;
  if (encodedQuery.empty()) return items;
  std::size_t start = 0;
  for (;;) {
    const auto end = std::min(encodedQuery.find('&', start), encodedQuery.size());
    const std::string_view piece = encodedQuery.substr(start, end - start);
    const auto equals = piece.find('=');
    if (equals == std::string_view::npos) {
      items.push_back(QueryItem{decodedComponent(piece), std::nullopt});
    } else {
      items.push_back(QueryItem{decodedComponent(piece.substr(0, equals)), decodedComponent(piece.substr(equals + 1))});
    }
    if (end == encodedQuery.size()) return items;
    start = end + 1;
  }
}

void URLComponents::appendQueryItem(std::string name, std::optional<std::string> value) {
  queryItems_.push_back(QueryItem{std::move(name), std::move(value)});
}

void URLComponents::removeQueryItems(std::string_view name) {
  std::erase_if(queryItems_, [name](const QueryItem& item) { return item.name == name; });
}

std::optional<std::string> URLComponents::queryValue(std::string_view name) const {
  auto it = std::find_if(queryItems_.begin(), queryItems_.end(), [name](const QueryItem& item) { return item.name == name; });
  if (it == queryItems_.end()) return std::nullopt;
  return it->value;
}

std::string URLComponents::percentEncodedQuery() const {
  std::string out;
  for (const auto& item : queryItems_) {
    if (!out.empty()) out.push_back('&');
    detail::appendPercentEncoded(out, item.name, detail::kUnreservedBytes);
    if (item.value) {
      out.push_back('=');
      detail::appendPercentEncoded(out, *item.value, detail::kUnreservedBytes);
    }
  }
  return out;
}

std::string URLComponents::string() const {
  std::string out;
  out.reserve(64 + path_.size());
  out.append(scheme_).append("://");
  if (host_.find(':') != std::string::npos && !host_.starts_with('[')) {
    out.append("[").append(host_).append("]");
  } else {
    out.append(host_);
  }
  if (port_) out.append(":").append(std::to_string(*port_));
  detail::appendPercentEncoded(out, path_, detail::kPathBytes);
  if (!queryItems_.empty()) out.append("?").append(percentEncodedQuery());
  return out;
}

}  // namespace quorvix
