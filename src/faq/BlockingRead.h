#pragma once

#include <memory>
#include <optional>

#include "quorvix/core/Json.h"
#include "quorvix/core/URLComponents.h"
#include "quorvix/platform/QXConnectionHandler.h"

namespace quorvix::detail {

/// Reads the components' URL synchronously through the handler and parses the
/// body. A transport error and a body that is not JSON are logged as
/// "com.quorvix Error:%@" and give nothing; an empty body gives nothing. Any
/// JSON is the answer, whatever "status" its body gives.
std::optional<Json> readBlocking(const std::shared_ptr<QXConnectionHandler>& handler, const URLComponents& components);

}  // namespace quorvix::detail
