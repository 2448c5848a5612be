// A service reply, as bytes off the wire, read by every endpoint's model:
// session, search, suggestions, FAQ answers and groups, labels, channels,
// contexts, bot replies and their entities and options.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

#include "FuzzInput.h"
#include "QuietLog.h"
#include "engine/Helpers.h"
#include "engine/JsonParse.h"
#include "engine/TypedResults.h"
#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/conversation/QXEntity.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/search/QXAutoCompleteResponse.h"
#include "quorvix/search/QXQueryResult.h"
#include "quorvix/search/QXSearchResponse.h"
#include "quorvix/search/SearchContext.h"

namespace {

using namespace quorvix;

constexpr std::string_view kEndpoints[] = {
    "hello.js", "answer.js", "keepAlive.js", "q.js",     "autoComplete", "cnf.json",
    "list.json", "contextvalues.js", "setParams", "get", "faq", "create", "statement", "createFeedbackResponse"};

void readResult(const std::shared_ptr<QXQueryResult>& result) {
  if (!result) return;
  if (const auto& body = result->body()) {
    (void)body->articleBody();
    (void)body->extraData();
  }
  (void)result->likeState();
  fuzz::each(result->channeling(), [](const auto& channel) { (void)channel->type(); });
}

void readConversational(const std::shared_ptr<QXConversationalResponse>& reply) {
  if (!reply) return;
  (void)reply->text();
  (void)reply->statement();
  (void)reply->status();
  (void)reply->articleId();
  (void)reply->missingEntities();
  fuzz::each(reply->entities(), [](const auto& entity) { (void)entity->value(); });
  (void)reply->quickOptions();
  (void)reply->persistentOptions();
  (void)reply->inJSON();
  (void)reply->description();
}

/// Every model that can be made of one dictionary of a reply.
void readDictionary(const JsonObject& object) {
  readResult(QXQueryResult::initWithParams(&object));
  if (auto group = QXFAQGroup::initWithParams(&object)) {
    (void)group->title();
    fuzz::each(group->data(), readResult);
    readConversational(group->parse());
  }
  if (auto label = QXLabel::initWithParams(&object)) {
    (void)label->labelId();
    (void)label->iconUrl();
    (void)label->copy();
  }
  if (auto channel = QXChanneling::initWithParams(&object)) (void)channel->buttonText();
  if (auto context = SearchContext::initWithParams(&object)) (void)context->multipleContext();
  if (auto entity = QXEntity::initWithParams(&object)) (void)entity->kind();
  (void)channeling(object);
  (void)fetchSuggestion(object);
  (void)answers(object);
  (void)wrapped(object);
  (void)asQuery(object);
}

void readTyped(const QXTypedResult& typed) {
  const auto* object = std::get_if<std::shared_ptr<QXObject>>(&typed);
  if (object == nullptr || !*object) return;
  if (auto search = std::dynamic_pointer_cast<QXSearchResponse>(*object)) {
    fuzz::each(search->answerList(), [](const auto&) {});
    if (search->context()) (void)search->context()->multipleContext();
    fuzz::each(search->channels(), [](const auto& channel) { (void)channel->type(); });
  }
  if (auto suggestions = std::dynamic_pointer_cast<QXAutoCompleteResponse>(*object)) (void)suggestions->suggestions();
  readConversational(std::dynamic_pointer_cast<QXConversationalResponse>(*object));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::quietLog();
  // The first line is the answer URL's query ("id=...&q=..."), the rest the body.
  const auto parts = fuzz::pieces(fuzz::text(data, size), 2);
  const std::string_view query = parts[0];
  const std::string_view body = parts[1];

  readConversational(QXConversationalResponse::initWithData(body));
  (void)parseJSON(body);
  const auto parsed = detail::parseJson(body);
  const auto* value = std::get_if<Json>(&parsed);
  if (value == nullptr) return 0;
  for (const std::string_view endpoint : kEndpoints) readTyped(detail::typedResult(endpoint, query, *value));
  if (const auto* object = value->if_object()) {
    readDictionary(*object);
    // Lists inside a reply ("data", "answers", "channels", ...) hold models too.
    for (const auto& member : *object) {
      if (const auto* array = member.value().if_array()) {
        for (const auto& element : *array) {
          if (const auto* inner = element.if_object()) readDictionary(*inner);
        }
      }
    }
  } else if (const auto* array = value->if_array()) {
    for (const auto& element : *array) {
      if (const auto* inner = element.if_object()) readDictionary(*inner);
    }
  }
  return 0;
}
