// The string helpers that read text from the service or the host:
// percent-decoding, colours, digests, base64, JSON and query readers.

#include <cstddef>
#include <cstdint>

#include "FuzzInput.h"
#include "engine/Helpers.h"
#include "quorvix/configuration/TextHelpers.h"
#include "quorvix/core/URLComponents.h"
#include "quorvix/search/QXStyledText.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quorvix;
  const std::string_view text = fuzz::text(data, size);
  (void)removingPercentEncoding(text);
  (void)percentEncode(text);
  (void)md5(text);
  (void)inHex(text);
  (void)hex(text);
  (void)wrappedBase64(text);
  (void)sorted(text);
  (void)appParams(text);
  (void)pathType(text);
  (void)parseJSON(text);
  (void)decode(text);
  (void)resultId(text);
  (void)intValue(text);
  (void)refererRequest(text);
  (void)isRTL(text);
  (void)strip(text);
  (void)utf16Length(text);
  return 0;
}
