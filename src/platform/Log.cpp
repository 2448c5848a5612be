#include "platform/Log.h"

#include <array>
#include <cstdint>

#include "core/WordScan.h"

#include "quorvix/platform/Platform.h"

namespace quorvix::detail {

std::string formatLog(std::string_view format, std::string_view argument) {
  const auto at = format.find("%@");
  if (at == std::string_view::npos) return std::string(format);
  std::string line;
  line.reserve(format.size() + argument.size());
  line.append(format.substr(0, at)).append(argument).append(format.substr(at + 2));
  return line;
}

void logFormat(std::string_view format, std::string_view argument) {
  if (!logWanted()) return;
  platform::log(formatLog(format, argument));
}

void logThrown(std::string_view where, std::string_view what) noexcept {
  try {
    platform::log("Quorvix: " + std::string(where) + " threw: " + std::string(what));
  } catch (...) {
    // The sink itself failed: there is nowhere left to say it.
  }
}

namespace {

bool endsValue(char c) { return c == '&' || c == '#' || c == ' ' || c == '"' || c == '\n' || c == ','; }

// The first "?" or "&" at or after `from`, or the size. Log lines can be
// megabytes of reply text with neither: they are skipped eight bytes at a time.
std::size_t nextQueryMark(std::string_view text, std::size_t from) {
  std::size_t i = skipWords(text, from, [](uint64_t word) { return holdsByte(word, '?') || holdsByte(word, '&'); });
  while (i < text.size() && text[i] != '?' && text[i] != '&') ++i;
  return i;
}

}  // namespace

std::string redactSecrets(std::string_view text) {
  auto redacted = redactedSecrets(text);
  return redacted ? std::move(*redacted) : std::string(text);
}

std::optional<std::string> redactedSecrets(std::string_view text) {
  static constexpr std::array<std::string_view, 2> kSecrets{"apiKey=", "sid="};
  std::string out;
  std::size_t copied = 0;  // text before this is in `out`
  for (std::size_t mark = nextQueryMark(text, 0); mark < text.size();) {
    const std::size_t name = mark + 1;
    std::size_t next = name;
    for (auto secret : kSecrets) {
      if (text.substr(name, secret.size()) != secret) continue;
      if (out.empty()) out.reserve(text.size());
      out.append(text.substr(copied, name + secret.size() - copied)).append("***");
      next = name + secret.size();
      while (next < text.size() && !endsValue(text[next])) ++next;
      copied = next;
      break;
    }
    mark = nextQueryMark(text, next);
  }
  if (copied == 0) return std::nullopt;
  out.append(text.substr(copied));
  return out;
}

}  // namespace quorvix::detail
