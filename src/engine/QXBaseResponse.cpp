#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

void QXBaseResponse::inflate(const JsonObject&) {}

}  // namespace quorvix
