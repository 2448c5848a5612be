#include "RequestDecoding.h"

#include <httplib.h>

#include <algorithm>
#include <cctype>
#include <optional>

namespace quorvix::sandbox {

namespace {

std::optional<int> hexValue(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  if (c >= 'a' && c <= 'f') {
    return c - 'a' + 10;
  }
  if (c >= 'A' && c <= 'F') {
    return c - 'A' + 10;
  }
  return std::nullopt;
}

std::string lowerCased(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

/// httplib files the peer's and its own address as pseudo header fields; they
/// were not sent by the client.
bool isAddedByServer(std::string_view name) {
  return name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" || name == "LOCAL_PORT";
}

}  // namespace

std::string decodeFormComponent(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '+') {
      decoded.push_back(' ');
      continue;
    }
    if (c == '%' && i + 2 < text.size()) {
      const std::optional<int> high = hexValue(text[i + 1]);
      const std::optional<int> low = hexValue(text[i + 2]);
      if (high && low) {
        decoded.push_back(static_cast<char>(*high * 16 + *low));
        i += 2;
        continue;
      }
    }
    decoded.push_back(c);
  }
  return decoded;
}

QueryItems decodeQuery(std::string_view query) {
  QueryItems items;
  while (!query.empty()) {
    const std::size_t end = std::min(query.find('&'), query.size());
    const std::string_view item = query.substr(0, end);
    query.remove_prefix(std::min(end + 1, query.size()));
    if (item.empty()) {
      continue;
    }
    const std::size_t equals = item.find('=');
    if (equals == std::string_view::npos) {
      items.emplace_back(decodeFormComponent(item), std::string());
    } else {
      items.emplace_back(decodeFormComponent(item.substr(0, equals)), decodeFormComponent(item.substr(equals + 1)));
    }
  }
  return items;
}

Addressee addresseeOf(std::string_view path, std::string_view host) {
  if (path.starts_with("/~")) {
    const std::size_t slash = path.find('/', 2);
    if (slash == std::string_view::npos) {
      return {std::string(path.substr(2)), "/"};
    }
    return {std::string(path.substr(2, slash - 2)), std::string(path.substr(slash))};
  }
  const std::size_t labelEnd = std::min(host.find_first_of(".:"), host.size());
  return {lowerCased(host.substr(0, labelEnd)), std::string(path)};
}

RecordedRequest recordOf(const httplib::Request& request) {
  RecordedRequest recorded;
  recorded.method = request.method;
  recorded.host = request.get_header_value("Host");
  recorded.target = request.target;
  recorded.path = request.path;
  Addressee addressee = addresseeOf(recorded.path, recorded.host);
  recorded.account = std::move(addressee.account);
  recorded.endpoint = std::move(addressee.endpoint);
  const std::size_t question = request.target.find('?');
  if (question != std::string::npos) {
    recorded.query = decodeQuery(std::string_view(request.target).substr(question + 1));
  }
  for (const auto& [name, value] : request.headers) {
    if (isAddedByServer(name)) {
      continue;
    }
    recorded.headers.emplace(lowerCased(name), value);
  }
  recorded.remotePort = request.remote_port;
  return recorded;
}

}  // namespace quorvix::sandbox
