#include "commands/FaqOutput.h"

#include <algorithm>
#include <boost/json/serialize.hpp>
#include <cmath>
#include <cstdio>

#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/search/QXQueryResult.h"

namespace quorvix::cli {
namespace {

Json text(const std::optional<std::string>& value) { return value ? Json(*value) : Json(nullptr); }
Json color(const std::optional<QXColor>& value) { return value ? Json(colorText(*value)) : Json(nullptr); }
Json font(const std::optional<QXFont>& value) {
  if (!value) return nullptr;
  return JsonObject{{"family", value->family}, {"pointSize", jsonNumber(value->pointSize)}, {"bold", value->bold}};
}
Json insets(const QXEdgeInsets& value) {
  return JsonObject{{"top", jsonNumber(value.top)},
                    {"left", jsonNumber(value.left)},
                    {"bottom", jsonNumber(value.bottom)},
                    {"right", jsonNumber(value.right)}};
}

JsonObject component(const QXComponentConfiguration& settings) {
  JsonObject json;
  json["backgroundColor"] = color(settings.backgroundColor());
  json["font"] = font(settings.font());
  json["textColor"] = color(settings.textColor());
  return json;
}

std::string yesNo(bool value) { return value ? "yes" : "no"; }
std::string orNone(const std::optional<std::string>& value) { return value.value_or("(none)"); }
std::string orNone(const std::optional<QXColor>& value) { return value ? colorText(*value) : "(none)"; }

}  // namespace

std::string colorText(const QXColor& value) {
  auto channel = [](double c) { return static_cast<int>(std::lround(std::clamp(c, 0.0, 1.0) * 255.0)); };
  char buffer[8];
  std::snprintf(buffer, sizeof buffer, "#%02X%02X%02X", channel(value.red), channel(value.green), channel(value.blue));
  return buffer;
}

TextResult configurationText(const QXConfiguration& configuration) {
  TextResult result;
  result.heading = "configuration";
  auto& rows = result.rows;
  rows.emplace_back("title", orNone(configuration.navBar()->title()));
  rows.emplace_back("kbId", orNone(configuration.kbId()));
  rows.emplace_back("language", orNone(configuration.languageCode()));
  rows.emplace_back("title colours", orNone(configuration.navBar()->backgroundColor()) + " on, " +
                                         orNone(configuration.navBar()->textColor()) + " text");
  rows.emplace_back("status bar", orNone(configuration.statusBarColor()));
  rows.emplace_back("search placeholder", orNone(configuration.searchBar()->placeHolder()));
  rows.emplace_back("voice", yesNo(configuration.searchBar()->voiceEnabled()));
  rows.emplace_back("autocomplete", yesNo(configuration.autoComplete()->autocompleteEnabled()));
  rows.emplace_back("hide branding", yesNo(configuration.logo()->hideBranding()));
  rows.emplace_back("no answers", orNone(configuration.customNoAnswersText()));
  rows.emplace_back("no answers (context)", orNone(configuration.customNoAnswersTextContext()));
  rows.emplace_back("feedback", orNone(configuration.feedbackCustomiseText()));
  rows.emplace_back("like buttons", orNone(configuration.like()->feedbackPositiveButtonText()) + " / " +
                                        orNone(configuration.like()->feedbackNegativeButtonText()));
  rows.emplace_back("context-dependent FAQ", yesNo(configuration.isContextDependent()));
  if (auto faqs = configuration.faqs()) {
    for (const auto& group : *faqs) {
      rows.emplace_back("FAQ group", group->title().value_or("(untitled)") + " (" +
                                         std::to_string(group->data().size()) + " answers)");
    }
  }
  if (auto labels = configuration.labels()) {
    for (const auto& label : *labels) {
      rows.emplace_back("label", label->labelId().value_or("?") + "  " + label->labelName().value_or(""));
    }
  }
  return result;
}

JsonObject configurationJson(const QXConfiguration& configuration) {
  JsonObject json;
  json["statusBarColor"] = color(configuration.statusBarColor());

  JsonObject navBar = component(*configuration.navBar());
  navBar["title"] = text(configuration.navBar()->title());
  json["navBar"] = std::move(navBar);

  auto titleSettings = configuration.title();
  JsonObject title = component(*titleSettings);
  title["rowHeight"] = jsonNumber(titleSettings->rowHeight());
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
  autoComplete["rowHeight"] = jsonNumber(autoSettings->rowHeight());
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
                                            {"feedbackTimeout", jsonNumber(settings->feedbackTimeout())},
                                            {"feedbackText", text(settings->feedbackText())},
                                            {"askAgent", settings->askAgent()},
                                            {"showSupportCenterLink", settings->showSupportCenterLink()},
                                            {"multiResultsHeader", text(settings->multiResultsHeader())}};

  json["isContextDependent"] = configuration.isContextDependent();
  if (auto faqs = configuration.faqs()) {
    JsonArray groups;
    for (const auto& group : *faqs) groups.push_back(groupJson(*group));
    json["faqs"] = std::move(groups);
  } else {
    json["faqs"] = nullptr;
  }
  json["languageCode"] = text(configuration.languageCode());
  json["kbId"] = text(configuration.kbId());
  json["customNoAnswersText"] = text(configuration.customNoAnswersText());
  json["customNoAnswersTextContext"] = text(configuration.customNoAnswersTextContext());
  json["feedbackCustomiseText"] = text(configuration.feedbackCustomiseText());
  if (auto labels = configuration.labels()) {
    JsonArray list;
    for (const auto& label : *labels) {
      list.push_back(JsonObject{{"labelId", text(label->labelId())},
                                {"context", text(label->context())},
                                {"labelName", text(label->labelName())},
                                {"iconUrl", text(label->iconUrl())}});
    }
    json["labels"] = std::move(list);
  } else {
    json["labels"] = nullptr;
  }
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

TextResult queryResultText(const QXQueryResult& result) {
  TextResult text;
  text.heading = result.title().value_or("(untitled)");
  text.rows.emplace_back("id", result.resultId().value_or(""));
  if (const auto& body = result.body()) {
    text.rows.emplace_back("body", body->articleBody().value_or(""));
    if (body->extraData()) text.rows.emplace_back("extra data", boost::json::serialize(*body->extraData()));
  }
  return text;
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

}  // namespace quorvix::cli
