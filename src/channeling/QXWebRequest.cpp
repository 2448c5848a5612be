#include "quorvix/channeling/QXWebRequest.h"

#include <algorithm>
#include <string_view>

#include "engine/Helpers.h"
#include "quorvix/core/URLComponents.h"

namespace quorvix {
namespace {

// The parts of a page address, read leniently: a page hands over what it
// built, which is often no strict URL (blanks, braces, quotes).
struct PageAddress {
  std::string_view scheme;
  std::string_view host;
  std::string_view path;
  std::optional<std::string_view> query;
};

PageAddress read(std::string_view url) {
  PageAddress address;
  const auto colon = url.find(':');
  if (colon == std::string_view::npos) return address;
  address.scheme = url.substr(0, colon);
  std::string_view rest = url.substr(colon + 1);
  rest = rest.substr(0, rest.find('#'));
  if (const auto question = rest.find('?'); question != std::string_view::npos) {
    address.query = rest.substr(question + 1);
    rest = rest.substr(0, question);
  }
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    const auto slash = std::min(rest.find('/'), rest.size());
    std::string_view authority = rest.substr(0, slash);
    if (const auto at = authority.rfind('@'); at != std::string_view::npos) authority.remove_prefix(at + 1);
    if (const auto port = authority.rfind(':'); port != std::string_view::npos &&
                                               authority.find_first_not_of("0123456789", port + 1) == std::string_view::npos) {
      authority = authority.substr(0, port);
    }
    address.host = authority;
    rest.remove_prefix(slash);
  }
  address.path = rest;
  return address;
}

std::vector<QueryItem> itemsOf(const PageAddress& address) {
  return address.query ? queryItemsOf(*address.query) : std::vector<QueryItem>{};
}

}  // namespace

bool isQuorvix(const QXWebRequest& request) { return read(request.url).scheme == "quorvix"; }

int64_t type(const QXWebRequest& request) {
  const PageAddress address = read(request.url);
  const std::string_view host = address.host;
  const auto dot = host.rfind('.');
  const std::string_view command = dot == std::string_view::npos ? host : host.substr(dot + 1);
  if (command == "cancel") return 1;
  if (command == "send") {
    const auto items = itemsOf(address);
    if (items.size() == 1) return items.front().name == "result" ? intValue(items.front().value.value_or("")) : 0;
    return 0;
  }
  if (command == "exit") return 6;
  if (command == "contactForm") {
    const std::string_view path = address.path;
    const auto slash = path.rfind('/');
    const auto last = slash == std::string_view::npos ? path : path.substr(slash + 1);
    return 8 + (last == "removeFile" ? 1 : 0);
  }
  return 0;
}

std::optional<std::string> result(const QXWebRequest& request) {
  const auto items = itemsOf(read(request.url));
  if (items.empty()) return std::nullopt;
  return items.front().value;
}

std::optional<Json> formData(const QXWebRequest& request) {
  constexpr std::string_view kPrefix = "quorvix://formData/";
  std::string text = request.url;
  for (auto at = text.find(kPrefix); at != std::string::npos; at = text.find(kPrefix, at)) text.erase(at, kPrefix.size());
  return parseJSON(text);
}

}  // namespace quorvix
