#include "quorvix/configuration/QXConfiguration.h"

#include "configuration/JsonReading.h"
#include "engine/Helpers.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "quorvix/faq/QXLabel.h"

namespace quorvix {
namespace {

constexpr std::string_view kContextDependent = "context-dependent";
constexpr std::string_view kDefaultNoAnswersTextContext =
    "No answer found for '{QUERY}'. Contact us today and let us know.";
// Without the final full stop, unlike the context variant.
constexpr std::string_view kDefaultNoAnswersText = "No answer found for '{QUERY}'. Contact us today and let us know";
constexpr std::string_view kDefaultFeedbackCustomiseText = "How can we improve article";
constexpr std::string_view kDefaultSubmitButtonText = "Submit";

std::string replaceAll(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

/// The colour written at `key`; nothing when the key is missing or not text.
std::optional<QXColor> colorAt(const JsonObject& object, std::string_view key) {
  const Json* value = object.if_contains(key);
  if (value == nullptr || !value->is_string()) return std::nullopt;
  return hex(value->get_string());
}

int64_t integerAt(const JsonObject& object, std::string_view key) {
  const Json* value = object.if_contains(key);
  return value != nullptr ? integerValue(*value) : 0;
}

}  // namespace

void QXConfiguration::inflate(const JsonObject& params) {
  setFaqs({});
  setParams(params);

  const Json* faqData = params.if_contains("faqData");
  isContextDependent_ = faqData != nullptr && faqData->is_string() && faqData->get_string() == kContextDependent;
  if (!isContextDependent_) setFAQs(faqData);

  languageCode_ = detail::textAt(params, "kbLanguageCode");
  if (auto text = detail::textAt(params, "customNoAnswersTextContext")) {
    customNoAnswersTextContext_ = replaceAll(std::move(*text), "'{CONTEXT}'", "'{QUERY}'");
  } else {
    customNoAnswersTextContext_ = std::string(kDefaultNoAnswersTextContext);
  }
  kbId_ = detail::textAt(params, "kbId");

  auto bar = navBar();
  bar->setTitle(detail::textAt(params, "titleTeaserText"));
  bar->setBackgroundColor(colorAt(params, "titleBGColor"));
  setStatusBarColor(bar->backgroundColor());
  bar->setTextColor(colorAt(params, "titleColor"));

  auto search = searchBar();
  search->setPlaceHolder(detail::textAt(params, "initialText"));
  search->setVoiceEnabled(detail::boolAt(params, "voiceEnabled"));
  search->setBackgroundColor(colorAt(params, "titleBGColor"));

  autoComplete()->setAutocompleteEnabled(detail::boolAt(params, "autocompleteEnabled"));
  logo()->setHideBranding(detail::boolAt(params, "hideBranding"));

  customNoAnswersText_ = detail::textAt(params, "customNoAnswersText");
  feedbackCustomiseText_ = detail::textAt(params, "feedbackCustomiseText");
  if (!feedbackCustomiseText_) feedbackCustomiseText_ = std::string(kDefaultFeedbackCustomiseText);
  if (!customNoAnswersText_) customNoAnswersText_ = std::string(kDefaultNoAnswersText);

  auto likeSettings = like();
  likeSettings->setShouldPresentDislikeOptions(true);
  likeSettings->setFeedbackType(integerAt(params, "feedbackType"));
  likeSettings->setFeedbackPositiveButtonText(detail::textAt(params, "feedbackPositiveButtonText"));
  likeSettings->setFeedbackNegativeButtonText(detail::textAt(params, "feedbackNegativeButtonText"));
  likeSettings->setFeedbackCustomiseText(detail::textAt(params, "feedbackCustomiseText"));

  auto dialog = negativeFeedback();
  dialog->setInAccurateContent(detail::textAt(params, "feedbackSearchProblemText"));
  dialog->setNotRelevantContent(detail::textAt(params, "feedbackProblemWithAnswerText"));
  dialog->setType(integerAt(params, "feedbackDialogType"));
  dialog->setPlaceholder(detail::textAt(params, "feedbackBoxText"));
  auto submit = detail::textAt(params, "feedbackBottomText");
  dialog->setSubmitButtonText(submit ? std::move(submit) : std::string(kDefaultSubmitButtonText));
  dialog->setTitle(detail::textAt(params, "feedbackSubmissionText"));
  dialog->setDisclaimer(detail::textAt(params, "feedbackDisclaimerText"));

  if (const Json* settings = params.if_contains("conversationSettings"); settings != nullptr && settings->is_object()) {
    if (const Json* data = settings->get_object().if_contains("data"); data != nullptr && data->is_object()) {
      conversationSettings()->inflate(data->get_object());
    }
  }

  if (const Json* script = params.if_contains("onLoadPageScript"); script != nullptr && script->is_string()) {
    if (std::optional<Json> labels = parseJSON(script->get_string())) setLabels(&*labels);
  }
}

std::optional<JsonObject> QXConfiguration::params() const {
  std::lock_guard lock(mutex_);
  return params_;
}

void QXConfiguration::setParams(std::optional<JsonObject> params) {
  std::lock_guard lock(mutex_);
  params_ = std::move(params);
}

std::optional<QXColor> QXConfiguration::statusBarColor() const {
  std::lock_guard lock(mutex_);
  return statusBarColor_;
}

void QXConfiguration::setStatusBarColor(std::optional<QXColor> color) {
  std::lock_guard lock(mutex_);
  statusBarColor_ = color;
}

std::shared_ptr<QXNavBarConfiguration> QXConfiguration::navBar() const { return lazily(navBar_); }
std::shared_ptr<QXTitleConfiguration> QXConfiguration::title() const { return lazily(title_); }
std::shared_ptr<QXSearchBarConfiguration> QXConfiguration::searchBar() const {
  std::lock_guard lock(mutex_);
  if (!searchBar_) {
    searchBar_ = std::make_shared<QXSearchBarConfiguration>();
    searchBar_->setSearchBarStyle(0);
  }
  return searchBar_;
}
std::shared_ptr<QXAutoCompleteConfiguration> QXConfiguration::autoComplete() const { return lazily(autoComplete_); }
std::shared_ptr<QXContentConfiguration> QXConfiguration::content() const { return lazily(content_); }
std::shared_ptr<QXLikeConfiguration> QXConfiguration::like() const { return lazily(like_); }
std::shared_ptr<QXNegativeFeedbackConfiguration> QXConfiguration::negativeFeedback() const {
  return lazily(negativeFeedback_);
}
std::shared_ptr<QXChannelingConfiguration> QXConfiguration::channeling() const { return lazily(channeling_); }
std::shared_ptr<QXLogoConfiguration> QXConfiguration::logo() const { return lazily(logo_); }
std::shared_ptr<ConversationSettings> QXConfiguration::conversationSettings() const {
  return lazily(conversationSettings_);
}

bool QXConfiguration::isContextDependent() const {
  std::lock_guard lock(mutex_);
  return isContextDependent_;
}

std::vector<std::shared_ptr<QXFAQGroup>> QXConfiguration::faqs() const {
  std::lock_guard lock(mutex_);
  return faqs_;
}

void QXConfiguration::setFaqs(std::vector<std::shared_ptr<QXFAQGroup>> faqs) {
  std::lock_guard lock(mutex_);
  faqs_ = std::move(faqs);
}

void QXConfiguration::setFAQs(const Json* groups) {
  std::vector<std::shared_ptr<QXFAQGroup>> built;
  if (groups != nullptr && groups->is_array()) {
    for (const Json& group : groups->get_array()) {
      if (auto faq = QXFAQGroup::initWithParams(group.if_object())) built.push_back(std::move(faq));
    }
  }
  setFaqs(std::move(built));
}

std::vector<std::shared_ptr<QXLabel>> QXConfiguration::labels() const {
  std::lock_guard lock(mutex_);
  return labels_;
}

void QXConfiguration::setLabels(const Json* labels) {
  if (labels == nullptr || !labels->is_array()) return;
  std::vector<std::shared_ptr<QXLabel>> built;
  for (const Json& label : labels->get_array()) {
    if (auto made = QXLabel::initWithParams(label.if_object())) built.push_back(std::move(made));
  }
  std::lock_guard lock(mutex_);
  labels_ = std::move(built);
}

bool QXConfiguration::useLabels() const {
  std::lock_guard lock(mutex_);
  return useLabels_;
}

void QXConfiguration::setUseLabels(bool useLabels) {
  std::lock_guard lock(mutex_);
  useLabels_ = useLabels;
}

}  // namespace quorvix
