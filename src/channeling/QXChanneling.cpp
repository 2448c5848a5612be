#include "quorvix/channeling/QXChanneling.h"

#include "configuration/JsonReading.h"
#include "quorvix/engine/Helpers.h"

namespace quorvix {
namespace {

using detail::boolAt;
using detail::textAt;

std::optional<Json> valueAt(const JsonObject& params, std::string_view key) {
  if (const auto* value = params.if_contains(key)) return *value;
  return std::nullopt;
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
  chatProvider_ = valueAt(params, "chatProvider");
  accontNum_ = valueAt(params, "accontNum");
  initialiseStatus_ = valueAt(params, "initialiseStatus");
  agentSkill_ = valueAt(params, "agentSkill");
  waitTime_ = valueAt(params, "waitTime");
  preChat_ = valueAt(params, "preChat");
  postChat_ = valueAt(params, "postChat");
  hideSendToEmail_ = boolAt(params, "hideSendToEmail");
  isPopup_ = boolAt(params, "isPopup");
  popupSize_ = valueAt(params, "popupSize");
  otherChatProviderValues_ = valueAt(params, "otherChatProviderValues");
  // The service's "accountNum" lands in `accontNum`, replacing what was read
  // above even when it is missing: that pairing is what hosts rely on.
  accontNum_ = valueAt(params, "accountNum");
  type_ = 3;
}

void QXChannelingContactForm::read(const JsonObject& params) {
  contactForms_ = valueAt(params, "contactForms");
  ticketingInterface_ = valueAt(params, "ticketingInterface");
  showInArticle_ = valueAt(params, "showInArticle");
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
