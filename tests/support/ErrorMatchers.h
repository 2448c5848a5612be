#pragma once
// Matchers for the errors the engine reports.

#include <gmock/gmock.h>

#include <optional>

#include "quorvix/core/QXError.h"

namespace quorvix::testing {

/// A transfer that got no HTTP answer: the service domain with code 0, and
/// the transport's reason in "description".
MATCHER(IsLostConnection, "a com.quorvix 0 error that says why") {
  const std::optional<QXError>& error = arg;
  return error && error->domain == errors::kServiceDomain && error->code == 0 &&
         error->userInfo.count("description") == 1 && !error->userInfo.at("description").empty();
}

}  // namespace quorvix::testing
