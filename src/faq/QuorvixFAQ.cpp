// The facade's FAQ operations: FAQ lists and groups, labels, answers and like feedback.
#include <string>

#include "engine/EngineState.h"
#include "engine/Helpers.h"
#include "engine/ServiceAddress.h"
#include "faq/BlockingRead.h"
#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/engine/Quorvix.h"
#include "quorvix/faq/FAQAnswer.h"
#include "quorvix/faq/QXCacheManager.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/faq/QXLikeStateHandler.h"
#include "quorvix/platform/Platform.h"
#include "quorvix/search/QXQueryResult.h"

namespace quorvix {
namespace {

constexpr std::string_view kListPath = "/api/faq/v1/list.json";
constexpr std::string_view kGroupPath = "/api/kb/v1/faq";
constexpr std::string_view kLabelsPath = "/api/kb/labels/v1/getUserLabels";
constexpr std::string_view kAnswerPath = "/api/faq/v1/answer.js";
constexpr std::string_view kFeedbackPath = "/api/analytics/v1/addFeedback";
// Every group is asked for with this many answers at most.
constexpr std::string_view kItems = "1000";

/// The base address with `path` appended and no query items yet.
std::optional<URLComponents> addressOf(const std::shared_ptr<AccountParams>& params, std::string_view path) {
  auto components = detail::serviceAddress(params, path);
  if (components) components->setQueryItems({});
  return components;
}

/// Appends the item only when there is a value (the service reads a bare name as an empty value).
void appendIfSet(URLComponents& components, std::string name, const std::optional<std::string>& value) {
  if (value) components.appendQueryItem(std::move(name), *value);
}

std::string boolText(bool value) { return value ? "true" : "false"; }

/// The context in its wire form, base64-encoded.
std::string contextItem(const JsonObject& context) { return wrappedBase64(wrapped(context)); }

}  // namespace

void Quorvix::fetchFAQList(QXResponseCompletion completion) {
  const std::shared_ptr<AccountParams> params = accountParams();
  std::optional<URLComponents> components = addressOf(params, kListPath);
  if (!components) {
    if (completion) completion(QXResponse{});
    return;
  }
  components->appendQueryItem("account", params->account());
  if (auto context = params->quorvixContext()) components->appendQueryItem("context", contextItem(*context));
  appendIfSet(*components, "kb", params->knowledgeBase());
  QXConnection::openConnection(connectionHandler(), *components, std::move(completion));
}

std::optional<Json> Quorvix::faqList() {
  const std::shared_ptr<AccountParams> params = accountParams();
  std::optional<URLComponents> components = addressOf(params, kListPath);
  if (!components) return std::nullopt;
  components->appendQueryItem("account", params->account());
  components->appendQueryItem("isFloat", "true");
  if (auto context = params->quorvixContext(); context && !context->empty()) {
    components->appendQueryItem("context", contextItem(*context));
  }
  appendIfSet(*components, "kb", params->knowledgeBase());
  return detail::readBlocking(connectionHandler(), *components);
}

std::optional<JsonArray> Quorvix::faqGroup() {
  const std::shared_ptr<AccountParams> params = accountParams();
  std::optional<URLComponents> components = addressOf(params, kGroupPath);
  if (!components) return std::nullopt;
  components->appendQueryItem("account", params->account());
  appendIfSet(*components, "kb", params->knowledgeBase());
  components->appendQueryItem("allContextsMandatory", boolText(params->allContextsMandatory()));
  components->appendQueryItem("items", std::string(kItems));
  if (auto context = params->quorvixContext()) components->appendQueryItem("context", contextItem(*context));
  std::optional<Json> group = detail::readBlocking(connectionHandler(), *components);
  if (!group) return std::nullopt;
  return JsonArray{std::move(*group)};
}

std::optional<Json> Quorvix::labels() {
  const std::shared_ptr<AccountParams> params = accountParams();
  std::optional<URLComponents> components = addressOf(params, kLabelsPath);
  if (!components) return std::nullopt;
  std::optional<std::string> kbId;
  {
    // The configuration's knowledge-base id: absent until the configuration has arrived.
    std::lock_guard lock(state_->mutex);
    if (state_->configuration) kbId = state_->configuration->kbId();
  }
  components->appendQueryItem("kb", kbId);
  appendIfSet(*components, "apiKey", params->apiKey());
  return detail::readBlocking(connectionHandler(), *components);
}

std::shared_ptr<QXFAQGroup> Quorvix::label() {
  const std::shared_ptr<AccountParams> params = accountParams();
  std::optional<URLComponents> components = addressOf(params, kGroupPath);
  if (!components) return nullptr;
  components->appendQueryItem("account", params->account());
  components->appendQueryItem("labelId", inHex(params->labelId().value_or("")));
  appendIfSet(*components, "kb", params->knowledgeBase());
  components->appendQueryItem("allContextsMandatory", boolText(params->allContextsMandatory()));
  components->appendQueryItem("items", std::string(kItems));
  const std::optional<Json> group = detail::readBlocking(connectionHandler(), *components);
  if (!group) return nullptr;
  return QXFAQGroup::initWithParams(group->if_object());
}

void Quorvix::faqForLabel(std::shared_ptr<QXLabel> forLabel, QXLabelFAQCompletion completion) {
  const std::shared_ptr<AccountParams> params = accountParams();
  std::optional<URLComponents> components = addressOf(params, kGroupPath);
  if (!components) {
    if (completion) completion(std::nullopt);
    return;
  }
  components->appendQueryItem("account", params->account());
  appendIfSet(*components, "kb", params->knowledgeBase());
  components->appendQueryItem("allContextsMandatory", boolText(params->allContextsMandatory()));
  components->appendQueryItem("items", std::string(kItems));
  // The filter is switched on by the account's label and filled from the label given.
  if (params->labelId() && !params->labelId()->empty() && forLabel) {
    components->appendQueryItem("labelId", inHex(forLabel->labelId().value_or("")));
  }
  if (auto context = params->quorvixContext()) components->appendQueryItem("context", contextItem(*context));
  QXConnection::openConnection(connectionHandler(), *components, [completion = std::move(completion)](QXResponse response) {
    if (!completion) return;
    if (response.error()) {
      completion(std::nullopt);
      return;
    }
    const Json* value = response.typeJson();
    if (value == nullptr) return;  // nothing parsed: no answer at all
    auto group = QXFAQGroup::initWithParams(value->if_object());
    if (!group) {
      completion(std::nullopt);
      return;
    }
    completion(group->data());
  });
}

void Quorvix::fetchFAQAnswer(std::string identifier, std::optional<std::string>, QXFAQAnswerCompletion completion) {
  const std::shared_ptr<AccountParams> params = accountParams();
  std::optional<URLComponents> components = addressOf(params, kAnswerPath);
  if (components) {
    components->appendQueryItem("id", identifier);
    components->appendQueryItem("referer", appParams("iOS"));
    components->appendQueryItem("account", params->account());
    appendIfSet(*components, "kb", params->knowledgeBase());
  }

  if (std::optional<JsonObject> stored = QXCacheManager::answerById(identifier)) {
    if (completion) completion(FAQAnswer::initWithParams(&*stored), std::nullopt);
    return;
  }
  if (!components) {
    if (completion) completion(nullptr, errors::notValidResponse());
    return;
  }
  QXConnection::openConnection(connectionHandler(), *components, [completion = std::move(completion)](QXResponse response) {
    if (!completion) return;
    if (response.error()) {
      completion(nullptr, response.error());
      return;
    }
    completion(response.typeAs<FAQAnswer>(), std::nullopt);
  });
}

void Quorvix::like(int32_t action, std::shared_ptr<QXQueryResult> forResult, QXLikeCompletion completion) {
  const std::optional<std::string> resultId = forResult ? forResult->resultId() : std::nullopt;
  auto finish = [resultId, action, completion](bool success) {
    platform::mainExecutor()->post([resultId, action, completion, success] {
      if (completion) completion(resultId, action, success);
    });
  };

  const std::shared_ptr<AccountParams> params = accountParams();
  std::optional<URLComponents> components = addressOf(params, kFeedbackPath);
  if (!components) {
    finish(false);
    return;
  }
  components->appendQueryItem("id", resultId);
  components->appendQueryItem("ignoreValidateCookie", "true");
  components->appendQueryItem("action", std::to_string(action));
  components->appendQueryItem("account", params->account());
  components->appendQueryItem("kb", params->knowledgeBase());
  if (forResult) appendIfSet(*components, "feedbackText", forResult->dislikeText());

  auto onReply = [finish](QXResponse response) { finish(response.status() == 200); };
  if (sessionId()) {
    executeRequest(std::move(*components), std::move(onReply));
  } else {
    QXConnection::openConnection(connectionHandler(), *components, std::move(onReply));
  }
}

std::shared_ptr<QXLikeStateHandler> Quorvix::likeState() {
  std::lock_guard lock(state_->mutex);
  if (!state_->likeState) state_->likeState = std::make_shared<QXLikeStateHandler>();
  return state_->likeState;
}

}  // namespace quorvix
