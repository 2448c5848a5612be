#include "tool/Validators.h"

#include <charconv>
#include <cmath>
#include <string>

namespace quorvix::cli {

CLI::Validator secondsValidator(bool allowZero) {
  return CLI::Validator(
      [allowZero](std::string& text) -> std::string {
        double value = 0;
        const auto* end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, value);
        if (error != std::errc() || stop != end || !std::isfinite(value)) {
          return "'" + text + "' is not a number of seconds";
        }
        if (allowZero ? value < 0 : value <= 0) {
          return allowZero ? "the seconds must not be negative" : "the seconds must be more than 0";
        }
        return {};
      },
      "");
}

}  // namespace quorvix::cli
