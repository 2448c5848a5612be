// The public seam for the default transport's trusted certificate authorities.

#include "platform/curl/CurlTransport.h"
#include "quorvix/platform/Platform.h"

namespace quorvix::platform {

void setCAFile(std::string path) { detail::CurlTransport::setCAFile(std::move(path)); }

}  // namespace quorvix::platform
