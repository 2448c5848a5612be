#include "conversation/ExtraData.h"

#include "conversation/ExtraDataSplit.h"

#include "engine/Helpers.h"

namespace quorvix {
namespace {

constexpr std::string_view kOpen = "<quorvixextradata>";
constexpr std::string_view kClose = "</quorvixextradata>";

std::string removingAll(std::string_view text, std::string_view what) {
  std::string out;
  out.reserve(text.size());
  std::size_t start = 0;
  for (auto at = text.find(what); at != std::string_view::npos; at = text.find(what, start)) {
    out.append(text.substr(start, at - start));
    start = at + what.size();
  }
  out.append(text.substr(start));
  return out;
}

}  // namespace

std::optional<std::string> extractBetween(std::string_view text, std::string_view start, std::string_view end) {
  const auto from = text.find(start);
  if (from == std::string_view::npos) return std::nullopt;
  // An end marker missing, or standing only before the start, means no block.
  const auto to = text.find(end, from + start.size());
  if (to == std::string_view::npos) return std::nullopt;
  return std::string(text.substr(from, to - from));
}

JsonArray extractExtraData(std::string_view text) {
  auto split = detail::splitExtraData(text);
  if (!split.data) return JsonArray{Json(split.text)};
  return JsonArray{Json(split.text), std::move(*split.data)};
}

namespace detail {

ExtraDataSplit splitExtraData(std::string_view text) {
  auto block = extractBetween(text, kOpen, kClose);
  if (!block) return {std::string(text), std::nullopt};
  const std::string json = removingAll(*block, kOpen);
  auto parsed = parseJSON(json);
  if (!parsed) return {std::string(text), std::nullopt};
  std::string whole;
  whole.reserve(kOpen.size() + json.size() + kClose.size());
  whole.append(kOpen).append(json).append(kClose);
  return {removingAll(text, whole), std::move(*parsed)};
}

}  // namespace detail

}  // namespace quorvix
