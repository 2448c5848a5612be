// Addresses from the service (icons, links) and from the channel pages' web
// view (page requests under the "quorvix" scheme).

#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzInput.h"
#include "quorvix/channeling/QXWebRequest.h"
#include "quorvix/core/URLComponents.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quorvix;
  const std::string url(fuzz::text(data, size));
  if (auto components = URLComponents::parse(url)) {
    for (const auto& item : components->queryItems()) (void)components->queryValue(item.name);
    const std::string written = components->string();
    (void)components->percentEncodedQuery();
    // What the engine writes it must be able to read again.
    components->appendQueryItem("q", url);
    (void)URLComponents::parse(components->string());
    components->removeQueryItems("q");
    (void)written;
  }
  (void)percentEncode(url);
  QXWebRequest request;
  request.url = url;
  (void)isQuorvix(request);
  (void)type(request);
  (void)result(request);
  (void)formData(request);
  return 0;
}
