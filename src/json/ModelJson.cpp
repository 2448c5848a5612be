#include "json/ModelJson.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <boost/json/serialize.hpp>

#include "core/Encoding.h"
#include "engine/Helpers.h"
#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/search/QXAutoCompleteResponse.h"
#include "quorvix/search/QXQueryResult.h"
#include "quorvix/search/QXSearchResponse.h"
#include "quorvix/search/QXStyledText.h"
#include "quorvix/search/SearchAnswer.h"

namespace quorvix::documents {
namespace {

Json text(const std::optional<std::string>& value) { return value ? Json(*value) : Json(nullptr); }
Json asSent(const std::optional<Json>& value) { return value ? *value : Json(nullptr); }
Json color(const std::optional<QXColor>& value) { return value ? Json(colorText(*value)) : Json(nullptr); }
Json font(const std::optional<QXFont>& value) { return value ? Json(fontJson(*value)) : Json(nullptr); }
Json insets(const QXEdgeInsets& value) {
  return JsonObject{{"top", number(value.top)},
                    {"left", number(value.left)},
                    {"bottom", number(value.bottom)},
                    {"right", number(value.right)}};
}

JsonObject component(const QXComponentConfiguration& settings) {
  JsonObject json;
  json["backgroundColor"] = color(settings.backgroundColor());
  json["font"] = font(settings.font());
  json["textColor"] = color(settings.textColor());
  return json;
}

JsonArray optionsJson(const std::optional<std::vector<std::shared_ptr<QXConversationQuickOption>>>& options) {
  JsonArray list;
  if (!options) return list;
  for (const auto& option : *options) {
    list.push_back(JsonObject{{"text", text(option->text())},
                              {"postback", option->postback().value_or(nullptr)},
                              {"external", option->external().value_or(nullptr)},
                              {"kind", option->kind()},
                              {"type", option->type()},
                              {"params", option->params()}});
  }
  return list;
}

}  // namespace

Json number(double value) {
  constexpr double kLargestExact = 9007199254740992.0;  // 2^53
  if (std::isfinite(value) && std::trunc(value) == value && std::fabs(value) <= kLargestExact) {
    return static_cast<std::int64_t>(value);
  }
  return value;
}

std::string colorText(const QXColor& value) {
  auto channel = [](double c) { return static_cast<unsigned char>(std::lround(std::clamp(c, 0.0, 1.0) * 255.0)); };
  std::string text = "#";
  for (const double c : {value.red, value.green, value.blue}) detail::appendHexByte(text, channel(c), detail::HexCase::upper);
  return text;
}

JsonObject fontJson(const QXFont& value) {
  return JsonObject{{"family", value.family}, {"pointSize", number(value.pointSize)}, {"bold", value.bold}};
}

JsonObject styledTextJson(const QXStyledText& styled) {
  JsonArray runs;
  for (const QXFontRun& run : styled.runs) {
    runs.push_back(JsonObject{{"location", run.location}, {"length", run.length}, {"font", fontJson(run.font)}});
  }
  return JsonObject{{"text", styled.text}, {"runs", std::move(runs)}};
}

JsonObject errorJson(const QXError& error) {
  JsonObject userInfo;
  for (const auto& [key, value] : error.userInfo) userInfo[key] = value;
  JsonObject body;
  body["domain"] = error.domain;
  body["code"] = static_cast<std::int64_t>(error.code);
  body["userInfo"] = std::move(userInfo);
  JsonObject document;
  document["error"] = std::move(body);
  return document;
}

JsonObject configurationJson(const QXConfiguration& configuration) {
  JsonObject json;
  json["statusBarColor"] = color(configuration.statusBarColor());

  JsonObject navBar = component(*configuration.navBar());
  navBar["title"] = text(configuration.navBar()->title());
  json["navBar"] = std::move(navBar);

  auto titleSettings = configuration.title();
  JsonObject title = component(*titleSettings);
  title["rowHeight"] = number(titleSettings->rowHeight());
  title["accessoryImageName"] = text(titleSettings->accessoryImageName());
  title["resultInset"] = insets(titleSettings->resultInset());
  title["textInset"] = insets(titleSettings->textInset());
  json["title"] = std::move(title);

  auto searchSettings = configuration.searchBar();
  JsonObject searchBar = component(*searchSettings);
  searchBar["placeHolder"] = text(searchSettings->placeHolder());
  searchBar["voiceEnabled"] = searchSettings->voiceEnabled();
  searchBar["searchBarStyle"] = searchSettings->searchBarStyle();
  json["searchBar"] = std::move(searchBar);

  auto autoSettings = configuration.autoComplete();
  JsonObject autoComplete = component(*autoSettings);
  autoComplete["autocompleteEnabled"] = autoSettings->autocompleteEnabled();
  autoComplete["rowHeight"] = number(autoSettings->rowHeight());
  autoComplete["withDivider"] = autoSettings->withDivider();
  autoComplete["boldedFont"] = font(autoSettings->boldedFont());
  json["autoComplete"] = std::move(autoComplete);

  json["content"] = component(*configuration.content());

  auto likeSettings = configuration.like();
  JsonObject like = component(*likeSettings);
  like["shouldPresentDislikeOptions"] = likeSettings->shouldPresentDislikeOptions();
  like["feedbackType"] = likeSettings->feedbackType();
  like["feedbackPositiveButtonText"] = text(likeSettings->feedbackPositiveButtonText());
  like["feedbackNegativeButtonText"] = text(likeSettings->feedbackNegativeButtonText());
  like["feedbackCustomiseText"] = text(likeSettings->feedbackCustomiseText());
  json["like"] = std::move(like);

  auto dialog = configuration.negativeFeedback();
  JsonObject negativeFeedback = component(*dialog);
  negativeFeedback["inAccurateContent"] = text(dialog->inAccurateContent());
  negativeFeedback["notRelevantContent"] = text(dialog->notRelevantContent());
  negativeFeedback["type"] = dialog->type();
  negativeFeedback["placeholder"] = text(dialog->placeholder());
  negativeFeedback["submitButtonText"] = text(dialog->submitButtonText());
  negativeFeedback["title"] = text(dialog->title());
  negativeFeedback["disclaimer"] = text(dialog->disclaimer());
  json["negativeFeedback"] = std::move(negativeFeedback);

  json["channeling"] = component(*configuration.channeling());
  JsonObject logo = component(*configuration.logo());
  logo["hideBranding"] = configuration.logo()->hideBranding();
  json["logo"] = std::move(logo);

  auto settings = configuration.conversationSettings();
  json["conversationSettings"] = JsonObject{{"requireAPIKey", settings->requireAPIKey()},
                                            {"channelsEnabled", settings->channelsEnabled()},
                                            {"feedbackEnabled", settings->feedbackEnabled()},
                                            {"feedbackTimeout", number(settings->feedbackTimeout())},
                                            {"feedbackText", text(settings->feedbackText())},
                                            {"askAgent", settings->askAgent()},
                                            {"showSupportCenterLink", settings->showSupportCenterLink()},
                                            {"multiResultsHeader", text(settings->multiResultsHeader())}};

  json["isContextDependent"] = configuration.isContextDependent();
  JsonArray groups;
  for (const auto& group : configuration.faqs()) groups.push_back(groupJson(*group));
  json["faqs"] = std::move(groups);
  json["languageCode"] = text(configuration.languageCode());
  json["kbId"] = text(configuration.kbId());
  json["customNoAnswersText"] = text(configuration.customNoAnswersText());
  json["customNoAnswersTextContext"] = text(configuration.customNoAnswersTextContext());
  json["feedbackCustomiseText"] = text(configuration.feedbackCustomiseText());
  JsonArray labels;
  for (const auto& label : configuration.labels()) {
    labels.push_back(JsonObject{{"labelId", text(label->labelId())},
                                {"context", text(label->context())},
                                {"labelName", text(label->labelName())},
                                {"iconUrl", text(label->iconUrl())}});
  }
  json["labels"] = std::move(labels);
  json["useLabels"] = configuration.useLabels();
  return json;
}

JsonObject groupJson(QXFAQGroup& group) {
  JsonObject json;
  json["title"] = text(group.title());
  json["behavior"] = group.behavior().value_or(nullptr);
  JsonArray answers;
  for (const auto& answer : group.data()) answers.push_back(queryResultJson(*answer));
  json["data"] = std::move(answers);
  return json;
}

JsonObject queryResultJson(const QXQueryResult& result) {
  JsonObject json;
  json["resultId"] = text(result.resultId());
  json["title"] = text(result.title());
  if (const auto& body = result.body()) {
    json["body"] = JsonObject{{"articleBody", text(body->articleBody())},
                              {"extraData", body->extraData() ? Json(*body->extraData()) : Json(nullptr)}};
  } else {
    json["body"] = nullptr;
  }
  json["hash"] = text(result.hash());
  json["likeState"] = result.likeState();
  return json;
}

std::string channelKind(const QXChanneling& channel) {
  if (dynamic_cast<const QXChannelingPhoneNumber*>(&channel)) return "phone";
  if (dynamic_cast<const QXChannelingChatForm*>(&channel)) return "chat";
  if (dynamic_cast<const QXChannelingContactForm*>(&channel)) return "contact form";
  if (dynamic_cast<const QXChannelingOpenCustomURL*>(&channel)) return "custom URL";
  if (dynamic_cast<const QXChannelingCustomScript*>(&channel)) return "custom script";
  return "plain";
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

JsonObject replyJson(QXConversationalResponse& reply) {
  JsonArray actions;
  for (const auto& action : reply.actions().value_or(std::vector<std::shared_ptr<QXAction>>{})) {
    actions.push_back(JsonObject{{"actionId", text(action->actionId())},
                                 {"text", text(action->text())},
                                 {"userInfo", action->userInfo() ? Json(*action->userInfo()) : Json(nullptr)}});
  }
  JsonArray entities;
  for (const auto& entity : reply.entities().value_or(std::vector<std::shared_ptr<QXEntity>>{})) {
    entities.push_back(entity->inJSON());
  }
  const auto readMore = reply.isReadMore();
  return JsonObject{{"status", reply.status()},
                    {"statement", text(reply.statement())},
                    {"text", text(reply.text())},
                    {"articleId", reply.articleId().value_or(nullptr)},
                    {"missingEntities", reply.missingEntities().value_or(nullptr)},
                    {"entities", std::move(entities)},
                    {"quickOptions", optionsJson(reply.quickOptions())},
                    {"persistentOptions", optionsJson(reply.persistentOptions())},
                    {"actions", std::move(actions)},
                    {"isReadMore", readMore ? Json(*readMore) : Json(nullptr)},
                    {"isValid", reply.isValid()}};
}

JsonObject faqListDocument(const Json& list) {
  JsonArray groups;
  if (list.is_array()) {
    for (const Json& entry : list.get_array()) {
      if (auto group = QXFAQGroup::initWithParams(entry.if_object())) groups.push_back(groupJson(*group));
    }
  }
  return JsonObject{{"groups", std::move(groups)}};
}

JsonObject labelFaqDocument(const std::string& labelId, const std::vector<std::shared_ptr<QXQueryResult>>& answers) {
  JsonArray list;
  for (const auto& answer : answers) {
    if (answer) list.push_back(queryResultJson(*answer));
  }
  return JsonObject{{"labelId", labelId}, {"answers", std::move(list)}};
}

JsonObject labelsDocument(const Json& labels) { return JsonObject{{"labels", labels}}; }

JsonObject likeDocument(const std::optional<std::string>& resultId, int32_t action, bool success) {
  return JsonObject{{"resultId", text(resultId)}, {"action", action}, {"success", success}};
}

JsonObject suggestionsDocument(const QXAutoCompleteResponse& response, const std::vector<QXStyledText>& suggestions) {
  JsonArray styled;
  for (const auto& suggestion : suggestions) styled.push_back(styledTextJson(suggestion));
  JsonArray phrases;
  for (const std::string& phrase : response.a()) phrases.push_back(Json(phrase));
  return JsonObject{{"query", text(response.query())}, {"a", std::move(phrases)}, {"suggestions", std::move(styled)}};
}

JsonObject contextsDocument(const std::string& names, const Json& reply) {
  return JsonObject{{"contexts", names}, {"result", reply}};
}

JsonObject changeContextDocument(const std::string& name, const Json& value, bool success) {
  return JsonObject{{"name", name}, {"value", value}, {"success", success}};
}

JsonObject channelsDocument(const std::string& articleId, const std::vector<std::shared_ptr<QXChanneling>>& channels) {
  JsonArray list;
  for (const auto& channel : channels) {
    if (channel) list.push_back(channelJson(*channel));
  }
  return JsonObject{{"articleId", articleId}, {"channels", std::move(list)}};
}

JsonObject reportDocument(const std::string& articleId, bool escalation, const QXChanneling& channel) {
  return JsonObject{{"articleId", articleId}, {"form", escalation ? "escalate" : "report"}, {"channel", channelJson(channel)}};
}

JsonObject sessionDocument(const std::optional<std::string>& sessionId, const std::optional<double>& delay) {
  return JsonObject{{"sessionId", text(sessionId)}, {"delay", delay ? number(*delay) : Json(nullptr)}};
}

JsonObject conversationDocument(const std::optional<std::string>& conversationId) {
  return JsonObject{{"conversationId", text(conversationId)}};
}

JsonObject exchangeDocument(const std::shared_ptr<QXConversationalResponse>& reply) {
  if (!reply) return JsonObject{{"reply", nullptr}};
  return replyJson(*reply);
}

}  // namespace quorvix::documents
