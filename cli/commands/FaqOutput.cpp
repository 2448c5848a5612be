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

std::string yesNo(bool value) { return value ? "yes" : "no"; }
std::string orNone(const std::optional<std::string>& value) { return value.value_or("(none)"); }
std::string orNone(const std::optional<QXColor>& value) { return value ? colorText(*value) : "(none)"; }

}  // namespace

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
  for (const auto& group : configuration.faqs()) {
    rows.emplace_back("FAQ group", group->title().value_or("(untitled)") + " (" +
                                       std::to_string(group->data().size()) + " answers)");
  }
  for (const auto& label : configuration.labels()) {
    rows.emplace_back("label", label->labelId().value_or("?") + "  " + label->labelName().value_or(""));
  }
  return result;
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

}  // namespace quorvix::cli
