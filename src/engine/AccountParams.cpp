#include "quorvix/engine/AccountParams.h"

#include "quorvix/engine/Helpers.h"
#include "quorvix/platform/Platform.h"

namespace quorvix {

std::shared_ptr<DynamicContext> DynamicContext::initWithContext(const std::string& text) {
  auto context = std::make_shared<DynamicContext>();
  const auto first = text.find(':');
  if (text.size() >= 4 && first != std::string::npos) {
    // "a:b:c" names a and holds c: the pieces between are dropped.
    context->name_ = text.substr(0, first);
    context->context_ = text.substr(text.rfind(':') + 1);
  }
  return context;
}

std::optional<JsonObject> AccountParams::quorvixContext() const {
  if (dynamicContexts_.empty()) return quorvixContext_;
  JsonObject merged;
  for (const auto& dynamic : dynamicContexts_) {
    if (dynamic) merged[dynamic->name()] = dynamic->context();
  }
  if (quorvixContext_) {
    for (const auto& entry : *quorvixContext_) merged[entry.key()] = entry.value();
  }
  return merged;
}

void AccountParams::appendDynamicContext(std::shared_ptr<DynamicContext> context) {
  dynamicContexts_.push_back(std::move(context));
}

void AccountParams::resetDynamicContext() { dynamicContexts_.clear(); }

std::optional<std::string> AccountParams::dynamicContextDescription() const {
  if (dynamicContexts_.empty()) return std::nullopt;
  std::string out;
  for (const auto& dynamic : dynamicContexts_) {
    if (dynamic) out.append(dynamic->context());
    out.append("-");
  }
  out.pop_back();
  return out;
}

std::optional<URLComponents> AccountParams::baseUrlComp() const {
  if (!account_) return std::nullopt;
  const QXServiceHosts hosts = platform::serviceHosts();
  URLComponents components;
  components.setScheme(hosts.scheme);
  components.setPort(hosts.port);
  if (server_ && !server_->empty()) {
    components.setHost(*server_ + hosts.mainSuffix);
    components.setPath("/~" + *account_);
  } else {
    // Without a server the account's own host, under the second, shorter suffix.
    components.setHost(*account_ + hosts.secondSuffix);
    components.setPath("");
  }
  components.setQueryItems({QueryItem{"Referer", appParams("app")}});
  return components;
}

std::string AccountParams::accountId() const { return md5(account_.value_or("") + knowledgeBase_.value_or("")); }

}  // namespace quorvix
