#include "quorvix/faq/QXFAQGroup.h"

#include "configuration/JsonReading.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/faq/FAQAnswer.h"

namespace quorvix {

void QXFAQGroup::inflate(const JsonObject& params) {
  setData(params.if_contains("data"));
  std::optional<Json> behavior;
  if (const Json* value = params.if_contains("behavior"); value != nullptr && !value->is_null()) behavior = *value;
  std::lock_guard lock(mutex_);
  title_ = detail::textAt(params, "title");
  behavior_ = std::move(behavior);
}

std::optional<std::string> QXFAQGroup::title() const {
  std::lock_guard lock(mutex_);
  return title_;
}

std::optional<Json> QXFAQGroup::behavior() const {
  std::lock_guard lock(mutex_);
  return behavior_;
}

std::vector<std::shared_ptr<QXQueryResult>> QXFAQGroup::data() const {
  std::lock_guard lock(mutex_);
  return data_;
}

void QXFAQGroup::setData(const Json* raw) {
  // The answers sit in the "data" of the first element; the rest is ignored.
  std::vector<std::shared_ptr<QXQueryResult>> answers;
  const JsonArray* outer = raw != nullptr ? raw->if_array() : nullptr;
  const JsonObject* first = outer != nullptr && !outer->empty() ? outer->front().if_object() : nullptr;
  const Json* inner = first != nullptr ? first->if_contains("data") : nullptr;
  if (inner != nullptr && inner->is_array()) {
    for (const Json& entry : inner->get_array()) {
      if (auto answer = FAQAnswer::initWithParams(entry.if_object())) answers.push_back(std::move(answer));
    }
  }
  setData(std::move(answers));
}

void QXFAQGroup::setData(std::vector<std::shared_ptr<QXQueryResult>> answers) {
  std::lock_guard lock(mutex_);
  data_ = std::move(answers);
}

std::shared_ptr<QXConversationalResponse> QXFAQGroup::parse() {
  std::lock_guard lock(mutex_);
  if (parse_) return parse_;
  JsonArray options;
  for (const auto& answer : data_) {
    JsonObject option;
    if (answer && answer->title()) option["text"] = *answer->title();
    option["kind"] = "inlineChoice";
    option["type"] = "url";
    options.push_back(std::move(option));
  }
  JsonObject reply;
  if (title_) reply["text"] = *title_;
  reply["persistentOptions"] = std::move(options);
  parse_ = QXConversationalResponse::initWithDictionary(std::move(reply));
  return parse_;
}

void QXFAQGroup::setParse(std::shared_ptr<QXConversationalResponse> response) {
  std::lock_guard lock(mutex_);
  parse_ = std::move(response);
}

}  // namespace quorvix
