#include "quorvix/conversation/ClientCalls.h"

#include <cctype>

#include "conversation/ExtraData.h"

namespace quorvix {

namespace {

void removeAll(std::string& text, std::string_view what) {
  std::string result;
  result.reserve(text.size());
  std::size_t from = 0;
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, from)) {
    result.append(text, from, at - from);
    from = at + what.size();
  }
  result.append(text, from, std::string::npos);
  text = std::move(result);
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  std::size_t from = 0;
  for (auto at = text.find(separator); at != std::string_view::npos; at = text.find(separator, from)) {
    parts.emplace_back(text.substr(from, at - from));
    from = at + 1;
  }
  parts.emplace_back(text.substr(from));
  return parts;
}

}  // namespace

std::optional<std::string> extractSignature(std::string_view receiver) {
  auto inside = extractBetween(receiver, "{{", "}}");
  if (!inside) return std::nullopt;
  removeAll(*inside, "{{");
  return inside;
}

std::string extractSelector(std::string_view receiver) {
  // A signature without "(" is taken whole rather than read out of range.
  return std::string(receiver.substr(0, receiver.find('(')));
}

std::vector<std::string> extractArguments(std::string_view receiver) {
  auto inside = extractBetween(receiver, "(", ")");
  if (!inside) return {};
  removeAll(*inside, "(");
  return split(*inside, ',');
}

std::string methodName(std::string_view receiver) {
  std::string name(receiver);
  if (!name.empty()) name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
  return name;
}

std::string inJsonText(std::string_view receiver) {
  std::string text = "{\"text\": \"";
  text.append(receiver);
  text.append("\"}");
  return text;
}

std::optional<JsonObject> args(const std::vector<std::string>& receiver) {
  if (receiver.empty()) return std::nullopt;
  JsonObject result;
  for (const auto& element : receiver) {
    if (element.find(':') == std::string::npos) return std::nullopt;
    auto parts = split(element, ':');
    if (parts.size() < 2) return std::nullopt;
    result[parts.front()] = parts.back();
  }
  return result;
}

}  // namespace quorvix
