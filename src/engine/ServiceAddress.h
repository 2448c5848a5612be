#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "quorvix/engine/AccountParams.h"

namespace quorvix::detail {

/// A fresh copy of the account's base address (its "Referer" item included)
/// with `path` appended; nothing without account parameters or an account.
inline std::optional<URLComponents> serviceAddress(const std::shared_ptr<AccountParams>& params, std::string_view path) {
  auto components = params ? params->baseUrlComp() : std::nullopt;
  if (components) components->appendPath(path);
  return components;
}

}  // namespace quorvix::detail
