#pragma once
/// @file
/// String, dictionary and bundle helpers that build addresses, identify the
/// client and encode parameters. Pure functions of their inputs (apart from
/// the host information and service hosts of the platform seams).

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quorvix/configuration/QXColor.h"
#include "quorvix/core/Json.h"
#include "quorvix/core/QXURLRequest.h"

namespace quorvix {

// --- strings ---------------------------------------------------------------

/// "app/<bundle id>/iOS/<build>/<receiver>": the client identification.
std::string appParams(std::string_view receiver);
/// A GET request with a 15-second time-out and "Referer" = receiver, no URL yet.
QXURLRequest refererRequest(std::string_view receiver);
/// The canonical form of a URL string: query decoded, first item dropped, the
/// rest sorted, "scheme://host/path?..." with host-set percent-encoding.
std::optional<std::string> sorted(std::string_view receiver);
/// MD5 of `sorted(receiver)` (of the receiver itself when it is not such a
/// URL), as 32 lower-case hexadecimal digits.
std::string md5(std::string_view receiver);
/// "/widget/scripts/" 0, "/api/faq/v1/" 1, "/api/widget/v1/" 2, "/widget/" 3, anything else 0.
int pathType(std::string_view receiver);
/// Standard base64 of the UTF-8 bytes, no line breaks.
std::string wrappedBase64(std::string_view receiver);
/// The colour written in hexadecimal text ("#FF8000"); opaque black when nothing reads.
QXColor hex(std::string_view receiver);
/// Percent-decodes and parses JSON, bare scalars allowed; when the text does
/// not decode, or its decoded form does not parse (a string holding "%22"),
/// parses the text as it came. Nothing when neither parses.
std::optional<Json> parseJSON(std::string_view receiver);
/// Replaces "&#39;", "%3E", "%3C", "%A0" by ', >, <, blank, then percent-decodes;
/// nothing when an escape left is invalid.
std::optional<std::string> decode(std::string_view receiver);
/// The value of the first "id=" item of a query string, every "id=" removed; nothing without one.
std::optional<std::string> resultId(std::string_view receiver);
/// The leading 32-bit integer in upper-case hexadecimal ("255" -> "FF", "-1" -> "FFFFFFFF").
std::string inHex(std::string_view receiver);
/// Removes percent-encoding; nothing when an escape is invalid or the bytes are not UTF-8.
std::optional<std::string> removingPercentEncoding(std::string_view receiver);
/// The platform's `intValue` of text: leading blanks, a sign, digits; saturates at the 32-bit range.
int32_t intValue(std::string_view text);
/// The platform's `integerValue` of a JSON value: numbers truncated, text read
/// as `intValue` does (64-bit), true 1, anything else 0.
int64_t integerValue(const Json& value);
/// The platform's `doubleValue` of a JSON value: numbers, leading number of text, true 1, else 0.
double doubleValue(const Json& value);
/// How a value prints in a "%@" format: strings as they stand, numbers and
/// literals as written, containers as compact JSON.
std::string describe(const Json& value);

// --- dictionaries ----------------------------------------------------------

/// The "context" wire form "k1:v1,k2:v2" (empty for an empty dictionary).
std::string wrapped(const JsonObject& receiver);
/// "key:value" of the first entry (empty for an empty dictionary).
std::string asQuery(const JsonObject& receiver);
/// Compact JSON; nothing (and the log line "JSON not valid %@") when it cannot be written.
std::optional<std::string> inJSON(const JsonObject& receiver);
/// The static FAQ/configuration address from "account" and "api" (removes
/// "api" from the receiver); nothing when either is missing.
std::optional<std::string> faqURL(JsonObject& receiver);
/// The receiver archived as bytes (compact JSON).
std::string archived(const JsonObject& receiver);

// --- bundle ----------------------------------------------------------------

/// The engine's own version.
std::string engineVersion();

}  // namespace quorvix
