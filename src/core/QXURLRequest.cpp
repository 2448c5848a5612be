#include "quorvix/core/QXURLRequest.h"

#include <algorithm>
#include <strings.h>

namespace quorvix {
namespace {
bool sameField(const std::string& a, const std::string& b) { return strcasecmp(a.c_str(), b.c_str()) == 0; }
}  // namespace

void QXURLRequest::setValue(std::string value, const std::string& field) {
  auto it = std::find_if(headers.begin(), headers.end(), [&](const auto& h) { return sameField(h.first, field); });
  if (it != headers.end()) {
    it->second = std::move(value);
  } else {
    headers.emplace_back(field, std::move(value));
  }
}

std::string QXURLRequest::valueForHTTPHeaderField(const std::string& field) const {
  auto it = std::find_if(headers.begin(), headers.end(), [&](const auto& h) { return sameField(h.first, field); });
  return it == headers.end() ? std::string() : it->second;
}

}  // namespace quorvix
