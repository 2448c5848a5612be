// Helpers on strings: client identification, canonical URLs, digests,
// colours, JSON from text, decoding and identifiers.
#include <algorithm>
#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>
#include <climits>
#include <cstdio>
#include <vector>

#include "engine/Helpers.h"
#include "engine/JsonParse.h"
#include "engine/Text.h"
#include "platform/Digest.h"
#include "quorvix/platform/Platform.h"

namespace quorvix {
namespace {

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
  std::string out;
  out.reserve(text.size());
  std::size_t start = 0;
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, start)) {
    out.append(text, start, at - start).append(to);
    start = at + from.size();
  }
  out.append(text, start, std::string::npos);
  text = std::move(out);
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  for (;;) {
    const auto at = text.find(separator, start);
    pieces.emplace_back(text.substr(start, at - start));
    if (at == std::string_view::npos) return pieces;
    start = at + 1;
  }
}

// The characters a URL host may hold unescaped.
bool isHostAllowed(unsigned char c) {
  return std::isalnum(c) || std::string_view("!$&'()*+,-.:;=[]_~").find(static_cast<char>(c)) != std::string_view::npos;
}

}  // namespace

std::string appParams(std::string_view receiver) {
  const QXHostInfo host = platform::hostInfo();
  std::string out = "app/";
  out.append(host.bundleIdentifier).append("/iOS/").append(host.buildNumber).append("/").append(receiver);
  return out;
}

QXURLRequest refererRequest(std::string_view receiver) {
  QXURLRequest request;
  request.method = "GET";
  request.timeoutInterval = 15.0;
  request.setValue(std::string(receiver), "Referer");
  return request;
}

std::optional<std::string> removingPercentEncoding(std::string_view receiver) {
  std::string out;
  out.reserve(receiver.size());
  std::size_t from = 0;
  // Copies the stretches between escapes whole.
  for (auto at = receiver.find('%'); at != std::string_view::npos; at = receiver.find('%', from)) {
    out.append(receiver.substr(from, at - from));
    if (at + 2 >= receiver.size()) return std::nullopt;
    const int high = hexDigit(receiver[at + 1]);
    const int low = hexDigit(receiver[at + 2]);
    if (high < 0 || low < 0) return std::nullopt;
    out.push_back(static_cast<char>(high * 16 + low));
    from = at + 3;
  }
  out.append(receiver.substr(from));
  if (!detail::isValidUtf8(out)) return std::nullopt;
  return out;
}

std::optional<std::string> sorted(std::string_view receiver) {
  auto parsed = boost::urls::parse_uri(receiver);
  if (!parsed || !parsed->has_authority()) return std::nullopt;
  const boost::urls::url_view url = *parsed;

  std::vector<std::string> pieces;
  if (url.has_query()) {
    if (auto query = removingPercentEncoding(url.encoded_query())) pieces = split(*query, '&');
  }
  if (!pieces.empty()) pieces.erase(pieces.begin());
  std::sort(pieces.begin(), pieces.end());

  std::string text;
  text.append(url.scheme()).append("://").append(url.host()).append("/").append(url.path()).append("?");
  for (const auto& piece : pieces) text.append(piece).append("&");
  text.pop_back();

  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string encoded;
  encoded.reserve(text.size() + text.size() / 4);
  for (unsigned char c : text) {
    if (isHostAllowed(c)) {
      encoded.push_back(static_cast<char>(c));
    } else {
      encoded.push_back('%');
      encoded.push_back(kHex[c >> 4]);
      encoded.push_back(kHex[c & 0xF]);
    }
  }
  return encoded;
}

std::string md5(std::string_view receiver) {
  if (auto canonical = sorted(receiver)) return detail::md5Hex(*canonical);
  return detail::md5Hex(receiver);
}

int pathType(std::string_view receiver) {
  if (receiver == "/widget/scripts/") return 0;
  if (receiver == "/api/faq/v1/") return 1;
  if (receiver == "/api/widget/v1/") return 2;
  if (receiver == "/widget/") return 3;
  return 0;
}

std::string wrappedBase64(std::string_view receiver) { return detail::base64(receiver); }

QXColor hex(std::string_view receiver) {
  std::string digits;
  digits.reserve(receiver.size());
  for (char c : receiver) {
    if (c != '#') digits.push_back(c);
  }
  std::size_t i = 0;
  while (i < digits.size() && std::isspace(static_cast<unsigned char>(digits[i]))) ++i;
  if (i + 1 < digits.size() && digits[i] == '0' && (digits[i + 1] == 'x' || digits[i + 1] == 'X') && i + 2 < digits.size() &&
      hexDigit(digits[i + 2]) >= 0) {
    i += 2;
  }
  uint64_t value = 0;
  for (; i < digits.size() && hexDigit(digits[i]) >= 0; ++i) {
    value = std::min<uint64_t>(value * 16 + static_cast<uint64_t>(hexDigit(digits[i])), UINT32_MAX);
  }
  const auto v = static_cast<uint32_t>(value);
  return QXColor{((v >> 16) & 0xFF) / 255.0, ((v >> 8) & 0xFF) / 255.0, (v & 0xFF) / 255.0, 1.0};
}

std::optional<Json> parseJSON(std::string_view receiver) {
  // Text without an escape decodes to itself: it is read once.
  if (receiver.find('%') != std::string_view::npos) {
    if (const auto decoded = removingPercentEncoding(receiver)) {
      auto result = detail::parseJson(*decoded);
      if (auto* value = std::get_if<Json>(&result)) return std::move(*value);
    }
  }
  // Text that did not decode, or no longer parses once decoded ("%22" in a
  // string), is read as it came.
  auto result = detail::parseJson(receiver);
  if (auto* value = std::get_if<Json>(&result)) return std::move(*value);
  return std::nullopt;
}

std::optional<std::string> decode(std::string_view receiver) {
  std::string text(receiver);
  replaceAll(text, "&#39;", "'");
  replaceAll(text, "%3E", ">");
  replaceAll(text, "%3C", "<");
  replaceAll(text, "%A0", " ");
  return removingPercentEncoding(text);
}

std::optional<std::string> resultId(std::string_view receiver) {
  for (auto& piece : split(receiver, '&')) {
    if (piece.starts_with("id=")) {
      replaceAll(piece, "id=", "");
      return piece;
    }
  }
  return std::nullopt;
}

int32_t intValue(std::string_view text) { return static_cast<int32_t>(detail::leadingInteger(text, INT32_MIN, INT32_MAX)); }

std::string inHex(std::string_view receiver) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%X", static_cast<unsigned int>(intValue(receiver)));
  return buffer;
}

std::string engineVersion() { return QUORVIX_ENGINE_VERSION; }

}  // namespace quorvix
