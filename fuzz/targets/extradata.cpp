// Mark-up inside bot replies: extra data between "<quorvixextradata>" tags,
// text between arbitrary markers, and client calls ("selector(arg1,arg2)").

#include <cstddef>
#include <cstdint>

#include "FuzzInput.h"
#include "conversation/ExtraData.h"
#include "quorvix/conversation/ClientCalls.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quorvix;
  const std::string_view input = fuzz::text(data, size);
  (void)extractExtraData(input);
  // Lines: the start marker, the end marker, then the text.
  const auto parts = fuzz::pieces(input, 3);
  (void)extractBetween(parts[2], parts[0], parts[1]);
  (void)extractBetween(input, parts[0], parts[1]);
  (void)extractSignature(input);
  (void)extractSelector(input);
  (void)extractArguments(input);
  (void)methodName(input);
  (void)inJsonText(input);
  (void)args(extractArguments(input));
  return 0;
}
