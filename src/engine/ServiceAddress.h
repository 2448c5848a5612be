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

/// Why `serviceAddress` gives nothing for these parameters: no account, or an
/// account or server that is not a host name.
inline QXError addressError(const std::shared_ptr<AccountParams>& params) {
  auto error = params ? params->addressError() : std::nullopt;
  return error ? *error : errors::noAccount();
}

}  // namespace quorvix::detail
