// Helpers on strings: client identification, canonical URLs, digests,
// colours, JSON from text, decoding and identifiers.
#include <algorithm>
#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>
#include <climits>
#include <cstdio>
#include <vector>

#include "core/Encoding.h"
#include "engine/Helpers.h"
#include "engine/JsonParse.h"
#include "engine/Text.h"
#include "platform/Digest.h"
#include "quorvix/platform/Platform.h"

namespace quorvix {
namespace {

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
  auto out = detail::percentDecoded(receiver, detail::BadEscape::fail);
  if (!out || !detail::isValidUtf8(*out)) return std::nullopt;
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

  return detail::percentEncoded(text, detail::kHostBytes);
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
      detail::hexDigitValue(digits[i + 2]) >= 0) {
    i += 2;
  }
  uint64_t value = 0;
  for (; i < digits.size() && detail::hexDigitValue(digits[i]) >= 0; ++i) {
    value = std::min<uint64_t>(value * 16 + static_cast<uint64_t>(detail::hexDigitValue(digits[i])), UINT32_MAX);
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
