#include "platform/Log.h"

#include <array>

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
}  // namespace

std::string redactSecrets(std::string_view text) {
  static constexpr std::array<std::string_view, 2> kSecrets{"apiKey=", "sid="};
  std::string out;
  out.reserve(text.size());
  std::size_t i = 0;
  while (i < text.size()) {
    bool replaced = false;
    if (i > 0 && (text[i - 1] == '?' || text[i - 1] == '&')) {
      for (auto secret : kSecrets) {
        if (text.substr(i, secret.size()) == secret) {
          out.append(secret).append("***");
          i += secret.size();
          while (i < text.size() && !endsValue(text[i])) ++i;
          replaced = true;
          break;
        }
      }
    }
    if (!replaced) out.push_back(text[i++]);
  }
  return out;
}

}  // namespace quorvix::detail
