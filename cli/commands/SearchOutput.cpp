#include "commands/SearchOutput.h"

#include <algorithm>
#include <boost/json.hpp>

#include "commands/FaqOutput.h"
#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/search/QXSearchResponse.h"
#include "quorvix/search/QXStyledText.h"
#include "quorvix/search/SearchAnswer.h"

namespace quorvix::cli {
namespace {

/// A value kept as sent, for a person: texts without quotes, the rest as JSON.
std::string shown(const std::optional<Json>& value) {
  if (!value) return "";
  if (value->is_string()) return std::string(value->get_string());
  return boost::json::serialize(*value);
}

/// " (DETAIL)" when there is a detail.
std::string detail(const std::string& value) { return value.empty() ? "" : " (" + value + ")"; }

}  // namespace

std::size_t utf8Offset(const std::string& text, std::size_t units) {
  std::size_t offset = 0;
  std::size_t counted = 0;
  while (offset < text.size() && counted < units) {
    const auto lead = static_cast<unsigned char>(text[offset]);
    std::size_t length = 1;
    if (lead >= 0xF0) {
      length = 4;
    } else if (lead >= 0xE0) {
      length = 3;
    } else if (lead >= 0xC0) {
      length = 2;
    }
    counted += length == 4 ? 2 : 1;
    offset += length;
    // Skip continuation bytes of a malformed sequence.
    while (offset < text.size() && (static_cast<unsigned char>(text[offset]) & 0xC0) == 0x80) ++offset;
  }
  return std::min(offset, text.size());
}

std::string markedText(const QXStyledText& styled, const std::optional<QXFont>& regular) {
  std::string marked;
  std::size_t done = 0;
  for (const QXFontRun& run : styled.runs) {
    const bool emphasised = run.font.bold || (regular && !(run.font == *regular));
    if (!emphasised || run.length == 0) continue;
    const std::size_t start = std::max(utf8Offset(styled.text, run.location), done);
    const std::size_t end = utf8Offset(styled.text, run.location + run.length);
    if (end <= start) continue;
    marked += styled.text.substr(done, start - done);
    marked += "*" + styled.text.substr(start, end - start) + "*";
    done = end;
  }
  marked += styled.text.substr(done);
  while (!marked.empty() && marked.back() == ' ') marked.pop_back();
  return marked;
}

std::string channelLine(const QXChanneling& channel) {
  std::string line = channel.buttonText().value_or("(no caption)") + " [" + channelKind(channel) + "]";
  if (const auto* phone = dynamic_cast<const QXChannelingPhoneNumber*>(&channel)) {
    line += detail(phone->phoneNumber().value_or(""));
  } else if (const auto* url = dynamic_cast<const QXChannelingOpenCustomURL*>(&channel)) {
    line += detail(url->linkUrl().value_or(""));
  } else if (const auto* chat = dynamic_cast<const QXChannelingChatForm*>(&channel)) {
    line += detail(shown(chat->chatProvider()));
  } else if (const auto* form = dynamic_cast<const QXChannelingContactForm*>(&channel)) {
    const std::optional<Json>& forms = form->contactForms();
    if (forms && forms->is_array()) line += detail(std::to_string(forms->get_array().size()) + " fields");
  }
  if (const auto& description = channel.channelDescription(); description && !description->empty()) {
    line += ": " + *description;
  }
  return line;
}

TextResult searchAnswerText(const SearchAnswer& answer, std::size_t rank) {
  TextResult result = queryResultText(answer);
  result.heading = std::to_string(rank) + ". " + result.heading;
  if (answer.isContextSelectionOnly()) result.rows.emplace_back("context", answer.contextValue());
  if (answer.channeling().empty()) {
    result.rows.emplace_back("channels", "none");
  }
  for (std::size_t i = 0; i < answer.channeling().size(); ++i) {
    result.rows.emplace_back(i == 0 ? "channels" : "", std::to_string(i) + ": " + channelLine(*answer.channeling()[i]));
  }
  return result;
}

}  // namespace quorvix::cli
