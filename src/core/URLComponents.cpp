#include "quorvix/core/URLComponents.h"

#include <algorithm>
#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

namespace quorvix {
namespace {

constexpr char kHex[] = "0123456789ABCDEF";

bool isUnreserved(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
         c == '_' || c == '~';
}

bool isPathChar(unsigned char c) {
  return isUnreserved(c) || c == '/' || c == ':' || c == '@' || c == '!' || c == '$' || c == '&' || c == '\'' ||
         c == '(' || c == ')' || c == '*' || c == '+' || c == ',' || c == ';' || c == '=';
}

template <class Allowed>
void appendEncoded(std::string& out, std::string_view text, Allowed allowed) {
  for (unsigned char c : text) {
    if (allowed(c)) {
      out.push_back(static_cast<char>(c));
    } else {
      out.push_back('%');
      out.push_back(kHex[c >> 4]);
      out.push_back(kHex[c & 0xF]);
    }
  }
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Percent-decodes one query name or value; an escape that is not one stays as written.
std::string decodedComponent(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size()) {
      const int high = hexValue(text[i + 1]);
      const int low = hexValue(text[i + 2]);
      if (high >= 0 && low >= 0) {
        out.push_back(static_cast<char>(high * 16 + low));
        i += 2;
        continue;
      }
    }
    out.push_back(text[i]);
  }
  return out;
}

}  // namespace

std::string percentEncode(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 2);
  appendEncoded(out, text, isUnreserved);
  return out;
}

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
    appendEncoded(out, item.name, isUnreserved);
    if (item.value) {
      out.push_back('=');
      appendEncoded(out, *item.value, isUnreserved);
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
  appendEncoded(out, path_, isPathChar);
  if (!queryItems_.empty()) out.append("?").append(percentEncodedQuery());
  return out;
}

}  // namespace quorvix
