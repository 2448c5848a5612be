#include "quorvix/channeling/QXWebRequest.h"

#include <algorithm>
#include <cctype>

#include "quorvix/engine/Helpers.h"
#include "quorvix/engine/URLComponents.h"

namespace quorvix {
namespace {

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

}  // namespace

bool isQuorvix(const QXWebRequest& request) {
  auto url = URLComponents::parse(request.url);
  return url && lowered(url->scheme()) == "quorvix";
}

int64_t type(const QXWebRequest& request) {
  auto url = URLComponents::parse(request.url);
  if (!url) return 0;
  const std::string& host = url->host();
  const std::string command = host.substr(host.rfind('.') == std::string::npos ? 0 : host.rfind('.') + 1);
  if (command == "cancel") return 1;
  if (command == "send") {
    const auto& items = url->queryItems();
    if (items.size() == 1) return items.front().name == "result" ? intValue(items.front().value.value_or("")) : 0;
    return 0;
  }
  if (command == "exit") return 6;
  if (command == "contactForm") {
    std::string_view path = url->path();
    const auto slash = path.rfind('/');
    const auto last = slash == std::string_view::npos ? path : path.substr(slash + 1);
    return 8 + (last == "removeFile" ? 1 : 0);
  }
  return 0;
}

std::optional<std::string> result(const QXWebRequest& request) {
  auto url = URLComponents::parse(request.url);
  if (!url || url->queryItems().empty()) return std::nullopt;
  return url->queryItems().front().value;
}

std::optional<Json> formData(const QXWebRequest& request) {
  constexpr std::string_view kPrefix = "quorvix://formData/";
  std::string text = request.url;
  for (auto at = text.find(kPrefix); at != std::string::npos; at = text.find(kPrefix, at)) text.erase(at, kPrefix.size());
  return parseJSON(text);
}

}  // namespace quorvix
