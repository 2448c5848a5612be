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

Json text(const std::optional<std::string>& value) { return value ? Json(*value) : Json(nullptr); }
Json asSent(const std::optional<Json>& value) { return value ? *value : Json(nullptr); }

JsonObject fontJson(const QXFont& font) {
  return JsonObject{{"family", font.family}, {"pointSize", jsonNumber(font.pointSize)}, {"bold", font.bold}};
}

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

JsonObject styledTextJson(const QXStyledText& styled) {
  JsonArray runs;
  for (const QXFontRun& run : styled.runs) {
    runs.push_back(JsonObject{{"location", run.location}, {"length", run.length}, {"font", fontJson(run.font)}});
  }
  return JsonObject{{"text", styled.text}, {"runs", std::move(runs)}};
}

std::string channelKind(const QXChanneling& channel) {
  if (dynamic_cast<const QXChannelingPhoneNumber*>(&channel)) return "phone";
  if (dynamic_cast<const QXChannelingChatForm*>(&channel)) return "chat";
  if (dynamic_cast<const QXChannelingContactForm*>(&channel)) return "contact form";
  if (dynamic_cast<const QXChannelingOpenCustomURL*>(&channel)) return "custom URL";
  if (dynamic_cast<const QXChannelingCustomScript*>(&channel)) return "custom script";
  return "plain";
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

JsonObject channelJson(const QXChanneling& channel) {
  JsonObject json{{"kind", channelKind(channel)},
                  {"type", channel.type()},
                  {"buttonText", text(channel.buttonText())},
                  {"channelDescription", text(channel.channelDescription())}};
  if (const auto* phone = dynamic_cast<const QXChannelingPhoneNumber*>(&channel)) {
    json["phoneNumber"] = text(phone->phoneNumber());
    json["customContent"] = text(phone->customContent());
  } else if (const auto* chat = dynamic_cast<const QXChannelingChatForm*>(&channel)) {
    json["chatProvider"] = asSent(chat->chatProvider());
    json["accontNum"] = asSent(chat->accontNum());
    json["accountNum"] = asSent(chat->accountNum());
    json["initialiseStatus"] = asSent(chat->initialiseStatus());
    json["agentSkill"] = asSent(chat->agentSkill());
    json["waitTime"] = asSent(chat->waitTime());
    json["preChat"] = asSent(chat->preChat());
    json["postChat"] = asSent(chat->postChat());
    json["hideSendToEmail"] = chat->hideSendToEmail();
    json["isPopup"] = chat->isPopup();
    json["popupSize"] = asSent(chat->popupSize());
    json["otherChatProviderValues"] = asSent(chat->otherChatProviderValues());
  } else if (const auto* form = dynamic_cast<const QXChannelingContactForm*>(&channel)) {
    json["contactForms"] = asSent(form->contactForms());
    json["ticketingInterface"] = asSent(form->ticketingInterface());
    json["showInArticle"] = asSent(form->showInArticle());
    json["thankYouMessage"] = text(form->thankYouMessage());
  } else if (const auto* url = dynamic_cast<const QXChannelingOpenCustomURL*>(&channel)) {
    json["linkUrl"] = text(url->linkUrl());
    json["linkTarget"] = text(url->linkTarget());
    json["popupSize"] = asSent(url->popupSize());
  } else if (const auto* script = dynamic_cast<const QXChannelingCustomScript*>(&channel)) {
    json["scriptContent"] = text(script->scriptContent());
  }
  return json;
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

JsonObject searchAnswerJson(const SearchAnswer& answer) {
  JsonObject json = queryResultJson(answer);
  json["likes"] = text(answer.likes());
  json["keywordsetId"] = text(answer.keywordsetId());
  json["isContextSelectionOnly"] = answer.isContextSelectionOnly();
  json["contextSelection"] = asSent(answer.contextSelection());
  json["contextValue"] = answer.isContextSelectionOnly() ? Json(answer.contextValue()) : Json(nullptr);
  json["currentContextIndex"] = answer.currentContextIndex();
  JsonArray channels;
  for (const auto& channel : answer.channeling()) channels.push_back(channelJson(*channel));
  json["channeling"] = std::move(channels);
  return json;
}

JsonObject searchResponseJson(const QXSearchResponse& response) {
  JsonArray answers;
  for (const auto& answer : response.answerList()) answers.push_back(searchAnswerJson(*answer));
  JsonObject json{{"answerList", std::move(answers)}};
  if (const auto& context = response.context()) {
    JsonArray values;
    for (const auto& value : context->values()) {
      values.push_back(JsonObject{{"id", asSent(value->id())},
                                  {"name", text(value->name())},
                                  {"flags", value->flags()},
                                  {"selectionText", text(value->selectionText())}});
    }
    json["context"] = JsonObject{{"v", context->v()},
                                 {"order", asSent(context->order())},
                                 {"values", std::move(values)},
                                 {"multipleContext", text(context->multipleContext())}};
  } else {
    json["context"] = nullptr;
  }
  json["requestId"] = asSent(response.requestId());
  json["kbLanguageCode"] = text(response.kbLanguageCode());
  json["detectedLanguage"] = text(response.detectedLanguage());
  if (const auto channels = response.channels()) {
    JsonArray list;
    for (const auto& channel : *channels) list.push_back(channelJson(*channel));
    json["channels"] = std::move(list);
  } else {
    json["channels"] = nullptr;
  }
  return json;
}

}  // namespace quorvix::cli
