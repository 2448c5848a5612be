// Masking of long numbers in bot replies (decode) and their restoring in what
// the user types (encode), with the tokens a tokenizer has already minted.

#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzInput.h"
#include "QuietLog.h"
#include "quorvix/conversation/QXTokenizer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quorvix;
  fuzz::quietLog();
  // First line: the bot's reply; the rest: the user's statement.
  const auto parts = fuzz::pieces(fuzz::text(data, size), 2);
  QXTokenizer tokenizer;
  const std::string masked = tokenizer.decode(parts[0]);
  (void)tokenizer.encode(masked);
  (void)tokenizer.encode(parts[1]);
  (void)tokenizer.decode(masked);
  // The pattern entry point, with the text itself as a pattern too.
  (void)tokenizer.updateStatement(parts[1], parts[0], true);
  (void)tokenizer.updateStatement(parts[0], "\\d{4,}", false);
  return 0;
}
