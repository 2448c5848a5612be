#include "platform/HostNames.h"

#include <algorithm>

namespace quorvix::detail {

bool isHostLabel(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
         });
}

bool isHostName(std::string_view text) {
  for (;;) {
    const auto dot = text.find('.');
    if (!isHostLabel(text.substr(0, dot))) return false;
    if (dot == std::string_view::npos) return true;
    text.remove_prefix(dot + 1);
  }
}

}  // namespace quorvix::detail
