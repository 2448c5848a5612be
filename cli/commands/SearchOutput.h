#pragma once
/// @file
/// How search replies, hits, channels and suggestions print: text for people
/// and JSON documents with every property under its name.

#include <optional>
#include <string>

#include "quorvix/configuration/TextHelpers.h"
#include "quorvix/core/Json.h"
#include "tool/Output.h"

namespace quorvix {
class QXChanneling;
class QXSearchResponse;
class SearchAnswer;
struct QXStyledText;
}  // namespace quorvix

namespace quorvix::cli {

/// The byte offset in UTF-8 `text` of the UTF-16 position `units` (clipped to
/// the text; a position inside a character moves to its end).
std::size_t utf8Offset(const std::string& text, std::size_t units);

/// The styled text with its emphasised runs written `*like this*`: runs in a
/// bold font, or in a font other than `regular` when that is known. Trailing
/// blanks are dropped.
std::string markedText(const QXStyledText& styled, const std::optional<QXFont>& regular);
using documents::channelJson;
using documents::channelKind;
using documents::searchAnswerJson;
using documents::searchResponseJson;
using documents::styledTextJson;

/// One line: caption, kind and what the kind carries (number, address, ...).
std::string channelLine(const QXChanneling& channel);

/// A hit: title as heading; id, body, extra data, context and channels as rows.
TextResult searchAnswerText(const SearchAnswer& answer, std::size_t rank);

}  // namespace quorvix::cli
