#include "quorvix/channeling/QXChanneling.h"

#include <initializer_list>
#include <utility>

#include "configuration/JsonReading.h"
#include "engine/Helpers.h"

namespace quorvix {
namespace {

using detail::boolAt;
using detail::textAt;

std::optional<Json> valueAt(const JsonObject& params, std::string_view key) {
  if (const auto* value = params.if_contains(key)) return *value;
  return std::nullopt;
}

/// Reads each listed key, in order, into its field (absent: nullopt).
void readValues(const JsonObject& params,
                std::initializer_list<std::pair<std::optional<Json>*, std::string_view>> fields) {
  for (const auto& [field, key] : fields) *field = valueAt(params, key);
}

int64_t integerAt(const JsonObject& params, std::string_view key) {
  const auto* value = params.if_contains(key);
  return value != nullptr ? integerValue(*value) : 0;
}

// The kind the service's two codes name.
std::shared_ptr<QXChanneling> makeKind(const JsonObject& params) {
  switch (integerAt(params, "actionEsc")) {
    case 0:
      switch (integerAt(params, "channel")) {
        case 1:
          return std::make_shared<QXChannelingContactForm>();
        case 3:
          return std::make_shared<QXChannelingChatForm>();
        case 5:
          return std::make_shared<QXChannelingPhoneNumber>();
        default:
          return std::make_shared<QXChanneling>();
      }
    case 1:
      return std::make_shared<QXChannelingOpenCustomURL>();
    case 2:
      return std::make_shared<QXChannelingCustomScript>();
    default:
      return std::make_shared<QXChanneling>();
  }
}

}  // namespace

std::shared_ptr<QXChanneling> QXChanneling::initWithParams(const JsonObject* params) {
  if (params == nullptr) return nullptr;
  auto channel = makeKind(*params);
  channel->read(*params);
  channel->buttonText_ = textAt(*params, "buttonText");
  channel->channelDescription_ = textAt(*params, "description");
  return channel;
}

std::vector<std::shared_ptr<QXChanneling>> QXChanneling::listWithParams(const Json* list) {
  std::vector<std::shared_ptr<QXChanneling>> channels;
  if (list == nullptr || !list->is_array()) return channels;
  channels.reserve(list->get_array().size());
  for (const auto& element : list->get_array()) {
    if (auto channel = initWithParams(element.if_object())) channels.push_back(std::move(channel));
  }
  return channels;
}

void QXChanneling::read(const JsonObject&) {}

void QXChannelingPhoneNumber::read(const JsonObject& params) {
  phoneNumber_ = textAt(params, "phoneNumber");
  customContent_ = textAt(params, "customContent");
  type_ = 5;
}

void QXChannelingChatForm::read(const JsonObject& params) {
  // The service's "accountNum" lands in `accontNum`, replacing what "accontNum"
  // gave even when it is missing: that pairing is what hosts rely on.
  readValues(params, {{&chatProvider_, "chatProvider"},
                      {&accontNum_, "accontNum"},
                      {&initialiseStatus_, "initialiseStatus"},
                      {&agentSkill_, "agentSkill"},
                      {&waitTime_, "waitTime"},
                      {&preChat_, "preChat"},
                      {&postChat_, "postChat"},
                      {&popupSize_, "popupSize"},
                      {&otherChatProviderValues_, "otherChatProviderValues"},
                      {&accontNum_, "accountNum"}});
  hideSendToEmail_ = boolAt(params, "hideSendToEmail");
  isPopup_ = boolAt(params, "isPopup");
  type_ = 3;
}

void QXChannelingContactForm::read(const JsonObject& params) {
  readValues(params, {{&contactForms_, "contactForms"},
                      {&ticketingInterface_, "ticketingInterface"},
                      {&showInArticle_, "showInArticle"}});
  thankYouMessage_ = textAt(params, "ThankYouMessage");
  type_ = 1;
}

void QXChannelingOpenCustomURL::read(const JsonObject& params) {
  linkUrl_ = textAt(params, "linkUrl");
  linkTarget_ = textAt(params, "linkTarget");
  popupSize_ = valueAt(params, "popupSize");
  type_ = 2;
}

void QXChannelingCustomScript::read(const JsonObject& params) {
  scriptContent_ = textAt(params, "scriptContent");
  type_ = 0;
}

std::optional<std::vector<std::shared_ptr<QXChanneling>>> channeling(const JsonObject& reply) {
  const auto* list = reply.if_contains("rechanneling");
  if (list == nullptr || !list->is_array() || list->get_array().empty()) return std::nullopt;
  return QXChanneling::listWithParams(list);
}

}  // namespace quorvix
