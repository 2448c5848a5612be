#pragma once
// Skipping text eight bytes at a time: replies and log lines can be megabytes
// with nothing of interest in most of them.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace quorvix::detail {

/// Whether any byte of `word` equals `byte`.
inline bool holdsByte(uint64_t word, unsigned char byte) {
  constexpr uint64_t kOnes = ~uint64_t{0} / 255;
  constexpr uint64_t kHigh = kOnes * 128;
  const uint64_t x = word ^ (kOnes * byte);
  return ((x - kOnes) & ~x & kHigh) != 0;
}

/// Whether any byte of `word` is an ASCII digit (a byte strictly between '/'
/// and ':'; bytes of 0x80 and above never count).
inline bool holdsDigit(uint64_t word) {
  constexpr uint64_t kOnes = ~uint64_t{0} / 255;
  constexpr uint64_t kLow = kOnes * 127;
  constexpr uint64_t kHigh = kOnes * 128;
  const uint64_t low = word & kLow;
  return ((kOnes * (127 + ':') - low) & ~word & (low + kOnes * (127 - '/')) & kHigh) != 0;
}

/// The first offset at or after `from` from which the eight bytes there may
/// hold what `mayHold` looks for, or the last offset with fewer than eight
/// bytes left; the caller reads on byte by byte from there.
template <class MayHold>
std::size_t skipWords(std::string_view text, std::size_t from, MayHold mayHold) {
  std::size_t i = from;
  while (i + 8 <= text.size()) {
    uint64_t word;
    std::memcpy(&word, text.data() + i, sizeof word);
    if (mayHold(word)) break;
    i += 8;
  }
  return i;
}

}  // namespace quorvix::detail
