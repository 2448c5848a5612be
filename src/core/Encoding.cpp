#include "core/Encoding.h"

namespace quorvix::detail {
namespace {

constexpr std::string_view kUpperDigits = "0123456789ABCDEF";
constexpr std::string_view kLowerDigits = "0123456789abcdef";

constexpr bool isAsciiAlnum(unsigned c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

// A table of the ASCII letters and digits plus `extra`.
constexpr ByteSet alnumAnd(std::string_view extra) {
  ByteSet set{};
  for (unsigned c = 0; c < set.size(); ++c) set[c] = isAsciiAlnum(c);
  for (const char c : extra) set[static_cast<unsigned char>(c)] = true;
  return set;
}

constexpr std::array<int8_t, 256> makeDigitValues() {
  std::array<int8_t, 256> values{};
  for (auto& value : values) value = -1;
  for (int i = 0; i < 16; ++i) {
    values[static_cast<unsigned char>(kUpperDigits[i])] = static_cast<int8_t>(i);
    values[static_cast<unsigned char>(kLowerDigits[i])] = static_cast<int8_t>(i);
  }
  return values;
}
constexpr std::array<int8_t, 256> kDigitValues = makeDigitValues();

}  // namespace

const ByteSet kUnreservedBytes = alnumAnd("-._~");
const ByteSet kPathBytes = alnumAnd("-._~/:@!$&'()*+,;=");
const ByteSet kHostBytes = alnumAnd("!$&'()*+,-.:;=[]_~");

int hexDigitValue(char c) { return kDigitValues[static_cast<unsigned char>(c)]; }

void appendHexByte(std::string& out, unsigned char byte, HexCase letters) {
  const std::string_view digits = letters == HexCase::upper ? kUpperDigits : kLowerDigits;
  out.push_back(digits[byte >> 4]);
  out.push_back(digits[byte & 0xF]);
}

std::string hexEncode(std::string_view bytes, HexCase letters) {
  std::string out;
  out.reserve(bytes.size() * 2);
  for (const unsigned char byte : bytes) appendHexByte(out, byte, letters);
  return out;
}

void appendPercentEncoded(std::string& out, std::string_view text, const ByteSet& keep) {
  for (const unsigned char c : text) {
    if (keep[c]) {
      out.push_back(static_cast<char>(c));
    } else {
      out.push_back('%');
      appendHexByte(out, c, HexCase::upper);
    }
  }
}

std::string percentEncoded(std::string_view text, const ByteSet& keep) {
  std::string out;
  out.reserve(text.size() + text.size() / 2);
  appendPercentEncoded(out, text, keep);
  return out;
}

std::optional<std::string> percentDecoded(std::string_view text, BadEscape bad) {
  std::string out;
  out.reserve(text.size());
  std::size_t from = 0;
  // Copies the stretches between escapes whole.
  for (auto at = text.find('%'); at != std::string_view::npos; at = text.find('%', from)) {
    out.append(text.substr(from, at - from));
    const int high = at + 2 < text.size() ? hexDigitValue(text[at + 1]) : -1;
    const int low = at + 2 < text.size() ? hexDigitValue(text[at + 2]) : -1;
    if (high < 0 || low < 0) {
      if (bad == BadEscape::fail) return std::nullopt;
      out.push_back('%');
      from = at + 1;
      continue;
    }
    out.push_back(static_cast<char>(high * 16 + low));
    from = at + 3;
  }
  out.append(text.substr(from));
  return out;
}

}  // namespace quorvix::detail
