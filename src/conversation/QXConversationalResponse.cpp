#include "quorvix/conversation/QXConversationalResponse.h"

#include <boost/json/serialize.hpp>

#include "engine/Helpers.h"
#include "quorvix/engine/QXConnection.h"

namespace quorvix {

namespace {

std::optional<std::string> textEntry(const JsonObject& params, std::string_view key) {
  if (const auto* value = params.if_contains(key)) {
    if (const auto* text = value->if_string()) return std::string(*text);
  }
  return std::nullopt;
}

// One option per element of the list, in order; an element that is not a
// dictionary gives an option over an empty one.
std::vector<std::shared_ptr<QXConversationQuickOption>> options(const JsonArray& list) {
  std::vector<std::shared_ptr<QXConversationQuickOption>> result;
  result.reserve(list.size());
  for (const auto& element : list) {
    const auto* params = element.if_object();
    result.push_back(std::make_shared<QXConversationQuickOption>(params ? *params : JsonObject()));
  }
  return result;
}

}  // namespace

std::shared_ptr<QXConversationalResponse> QXConversationalResponse::initWithJSON(std::string_view json) {
  auto response = std::make_shared<QXConversationalResponse>();
  if (auto parsed = parseJSON(json)) {
    if (auto* object = parsed->if_object()) response->params_ = std::move(*object);
  }
  response->isValid_ = true;
  return response;
}

std::shared_ptr<QXConversationalResponse> QXConversationalResponse::initWithData(std::string_view bytes) {
  auto response = std::make_shared<QXConversationalResponse>();
  auto parsed = QXConnection::parse(bytes);
  if (auto* value = std::get_if<Json>(&parsed)) {
    if (auto* object = value->if_object()) response->params_ = std::move(*object);
  }
  return response;
}

std::shared_ptr<QXConversationalResponse> QXConversationalResponse::initWithDictionary(JsonObject dictionary) {
  auto response = std::make_shared<QXConversationalResponse>();
  response->params_ = std::move(dictionary);
  return response;
}

void QXConversationalResponse::setInnerActions(std::vector<std::shared_ptr<QXAction>> actions) {
  innerActions_ = std::move(actions);
}

void QXConversationalResponse::addAction(std::shared_ptr<QXAction> action) {
  if (!action) return;
  if (!innerActions_) innerActions_.emplace();
  innerActions_->push_back(std::move(action));
}

int64_t QXConversationalResponse::status() const {
  if (const auto* value = params_.if_contains("status")) return integerValue(*value);
  return 0;
}

std::optional<std::string> QXConversationalResponse::statement() const { return textEntry(params_, "statement"); }

void QXConversationalResponse::setStatement(std::optional<std::string> statement) {
  if (statement) params_["statement"] = *statement;
}

std::optional<std::string> QXConversationalResponse::text() const {
  if (const auto* caption = params_.if_contains("answersCaption"); caption != nullptr && !caption->is_null()) {
    return textEntry(params_, "answersCaption");
  }
  return textEntry(params_, "text");
}

void QXConversationalResponse::setText(std::optional<std::string> text) {
  if (text) params_["text"] = *text;
}

std::optional<Json> QXConversationalResponse::articleId() const {
  if (const auto* value = params_.if_contains("articleId"); value != nullptr && !value->is_null()) return *value;
  return std::nullopt;
}

const std::optional<Json>& QXConversationalResponse::missingEntities() {
  if (!missingEntities_) {
    if (const auto* value = params_.if_contains("missingEntities"); value != nullptr && !value->is_null()) {
      missingEntities_ = *value;
    }
  }
  return missingEntities_;
}

const std::optional<std::vector<std::shared_ptr<QXEntity>>>& QXConversationalResponse::entities() {
  if (!entities_) {
    const auto* value = params_.if_contains("entities");
    if (value == nullptr || !value->is_array()) return entities_;
    std::vector<std::shared_ptr<QXEntity>> list;
    for (const auto& element : value->get_array()) {
      const auto* params = element.if_object();
      JsonObject empty;
      list.push_back(QXEntity::initWithParams(params ? params : &empty));
    }
    entities_ = std::move(list);
  }
  return entities_;
}

const std::optional<QXConversationalResponse::OptionList>& QXConversationalResponse::quickOptions() {
  if (!quickOptions_) {
    const auto* value = params_.if_contains("quickOptions");
    if (value == nullptr || !value->is_array()) return quickOptions_;
    quickOptions_ = options(value->get_array());
  }
  return quickOptions_;
}

const std::optional<QXConversationalResponse::OptionList>& QXConversationalResponse::persistentOptions() {
  if (!persistentOptions_) {
    const auto* value = params_.if_contains("persistentOptions");
    if (value == nullptr || !value->is_array()) return persistentOptions_;
    persistentOptions_ = options(value->get_array());
  }
  return persistentOptions_;
}

void QXConversationalResponse::setPersistentOptions(const OptionList& options) {
  JsonArray list;
  list.reserve(options.size());
  for (const auto& option : options) {
    JsonObject entry;
    const auto text = option ? option->text() : std::nullopt;
    entry["text"] = text ? Json(*text) : Json(nullptr);
    entry["kind"] = "inlineChoice";
    entry["type"] = "postback";
    list.emplace_back(std::move(entry));
  }
  params_["persistentOptions"] = std::move(list);
  // Clearing the quick options by an empty string (not by removing the key) is
  // what hosts of this service expect.
  params_["quickOptions"] = "";
}

std::optional<bool> QXConversationalResponse::isReadMore() const {
  const auto* value = params_.if_contains("isReadMore");
  if (value == nullptr) return std::nullopt;
  if (const auto* flag = value->if_bool()) return *flag;
  if (value->is_number()) return doubleValue(*value) != 0;
  return std::nullopt;
}

void QXConversationalResponse::setIsReadMore(std::optional<bool> isReadMore) {
  if (isReadMore) params_["isReadMore"] = *isReadMore;
}

std::optional<std::string> QXConversationalResponse::inJSON() const { return quorvix::inJSON(params_); }

std::string QXConversationalResponse::description() const { return boost::json::serialize(params_); }

}  // namespace quorvix
