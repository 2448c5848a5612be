#pragma once
// Hexadecimal digits and percent-encoding: the one implementation every
// address, digest and query of the engine is written and read with.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvix::detail {

/// Which bytes stay as they are when text is percent-encoded: one flag per byte value.
using ByteSet = std::array<bool, 256>;

/// `A-Z a-z 0-9 - . _ ~`: query names and values keep these and escape everything else.
extern const ByteSet kUnreservedBytes;
/// The unreserved bytes and `/ : @ ! $ & ' ( ) * + , ; =`: what a path keeps.
extern const ByteSet kPathBytes;
/// ASCII letters, digits and `! $ & ' ( ) * + , - . : ; = [ ] _ ~`: what a host keeps.
extern const ByteSet kHostBytes;

/// Whether hexadecimal digits come out as "0-9A-F" or "0-9a-f".
enum class HexCase { upper, lower };

/// The value of one hexadecimal digit (either case), or -1 for any other character.
int hexDigitValue(char c);
/// Appends the two hexadecimal digits of a byte.
void appendHexByte(std::string& out, unsigned char byte, HexCase letters);
/// Every byte as two hexadecimal digits.
std::string hexEncode(std::string_view bytes, HexCase letters);

/// Appends the text with every byte outside `keep` written as "%XY" (upper-case digits).
void appendPercentEncoded(std::string& out, std::string_view text, const ByteSet& keep);
/// The text with every byte outside `keep` written as "%XY" (upper-case digits).
std::string percentEncoded(std::string_view text, const ByteSet& keep);

/// What percent-decoding does with "%" that is not followed by two hexadecimal digits.
enum class BadEscape {
  fail,  ///< nothing comes out
  keep,  ///< the characters stay as written
};
/// Replaces every "%XY" by its byte. Nothing when an escape is bad and `bad` is `fail`.
/// The bytes are not checked for UTF-8.
std::optional<std::string> percentDecoded(std::string_view text, BadEscape bad);

}  // namespace quorvix::detail
