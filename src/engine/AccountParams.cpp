#include "quorvix/engine/AccountParams.h"

#include "engine/Helpers.h"
#include "platform/HostNames.h"
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

std::string DynamicContext::name() const {
  std::lock_guard lock(mutex_);
  return name_;
}

void DynamicContext::setName(std::string name) {
  std::lock_guard lock(mutex_);
  name_ = std::move(name);
}

std::string DynamicContext::context() const {
  std::lock_guard lock(mutex_);
  return context_;
}

void DynamicContext::setContext(std::string context) {
  std::lock_guard lock(mutex_);
  context_ = std::move(context);
}

namespace {

// Reads or replaces one field under the object's lock.
template <class T>
T read(std::mutex& mutex, const T& field) {
  std::lock_guard lock(mutex);
  return field;
}

template <class T>
void write(std::mutex& mutex, T& field, T value) {
  std::lock_guard lock(mutex);
  field = std::move(value);
}

}  // namespace

AccountParams::AccountParams(const AccountParams& other) {
  std::lock_guard lock(other.mutex_);
  account_ = other.account_;
  knowledgeBase_ = other.knowledgeBase_;
  apiKey_ = other.apiKey_;
  server_ = other.server_;
  labelId_ = other.labelId_;
  allContextsMandatory_ = other.allContextsMandatory_;
  quorvixContext_ = other.quorvixContext_;
  referrer_ = other.referrer_;
  dynamicContexts_ = other.dynamicContexts_;
  storedBaseUrlComp_ = other.storedBaseUrlComp_;
}

std::optional<std::string> AccountParams::account() const { return read(mutex_, account_); }
void AccountParams::setAccount(std::optional<std::string> v) { write(mutex_, account_, std::move(v)); }
std::optional<std::string> AccountParams::knowledgeBase() const { return read(mutex_, knowledgeBase_); }
void AccountParams::setKnowledgeBase(std::optional<std::string> v) { write(mutex_, knowledgeBase_, std::move(v)); }
std::optional<std::string> AccountParams::apiKey() const { return read(mutex_, apiKey_); }
void AccountParams::setApiKey(std::optional<std::string> v) { write(mutex_, apiKey_, std::move(v)); }
std::optional<std::string> AccountParams::server() const { return read(mutex_, server_); }
void AccountParams::setServer(std::optional<std::string> v) { write(mutex_, server_, std::move(v)); }
std::optional<std::string> AccountParams::labelId() const { return read(mutex_, labelId_); }
void AccountParams::setLabelId(std::optional<std::string> v) { write(mutex_, labelId_, std::move(v)); }
bool AccountParams::allContextsMandatory() const { return read(mutex_, allContextsMandatory_); }
void AccountParams::setAllContextsMandatory(bool v) { write(mutex_, allContextsMandatory_, v); }
void AccountParams::setQuorvixContext(std::optional<JsonObject> v) { write(mutex_, quorvixContext_, std::move(v)); }
std::string AccountParams::referrer() const { return read(mutex_, referrer_).value_or("mobile"); }
void AccountParams::setReferrer(std::optional<std::string> v) { write(mutex_, referrer_, std::move(v)); }
std::vector<std::shared_ptr<DynamicContext>> AccountParams::dynamicContexts() const { return read(mutex_, dynamicContexts_); }
void AccountParams::setDynamicContexts(std::vector<std::shared_ptr<DynamicContext>> v) {
  write(mutex_, dynamicContexts_, std::move(v));
}
void AccountParams::setBaseUrlComp(std::optional<URLComponents> v) { write(mutex_, storedBaseUrlComp_, std::move(v)); }

std::optional<JsonObject> AccountParams::quorvixContext() const {
  std::vector<std::shared_ptr<DynamicContext>> dynamics;
  std::optional<JsonObject> statics;
  {
    std::lock_guard lock(mutex_);
    if (dynamicContexts_.empty()) return quorvixContext_;
    dynamics = dynamicContexts_;
    statics = quorvixContext_;
  }
  // The contexts are read outside this object's lock: each guards itself.
  JsonObject merged;
  for (const auto& dynamic : dynamics) {
    if (dynamic) merged[dynamic->name()] = dynamic->context();
  }
  if (statics) {
    for (const auto& entry : *statics) merged[entry.key()] = entry.value();
  }
  return merged;
}

void AccountParams::appendDynamicContext(std::shared_ptr<DynamicContext> context) {
  std::lock_guard lock(mutex_);
  dynamicContexts_.push_back(std::move(context));
}

void AccountParams::resetDynamicContext() {
  std::lock_guard lock(mutex_);
  dynamicContexts_.clear();
}

std::optional<std::string> AccountParams::dynamicContextDescription() const {
  const auto dynamics = dynamicContexts();
  if (dynamics.empty()) return std::nullopt;
  std::string out;
  for (const auto& dynamic : dynamics) {
    if (dynamic) out.append(dynamic->context());
    out.append("-");
  }
  out.pop_back();
  return out;
}

namespace {

// Why an account and server cannot address the service, or nothing.
std::optional<QXError> namesError(const std::optional<std::string>& account, const std::optional<std::string>& server) {
  if (!account) return errors::noAccount();
  // The account is one label of the host (or the path "/~account" with a server).
  if (!detail::isHostLabel(*account)) return errors::badAccountName("account", *account);
  if (server && !server->empty() && !detail::isHostName(*server)) return errors::badAccountName("server", *server);
  return std::nullopt;
}

}  // namespace

std::optional<QXError> AccountParams::addressError() const {
  std::lock_guard lock(mutex_);
  return namesError(account_, server_);
}

std::optional<URLComponents> AccountParams::baseUrlComp() const {
  std::optional<std::string> account;
  std::optional<std::string> server;
  {
    std::lock_guard lock(mutex_);
    account = account_;
    server = server_;
  }
  if (namesError(account, server)) return std::nullopt;
  const QXServiceHosts hosts = platform::serviceHosts();
  URLComponents components;
  components.setScheme(hosts.scheme);
  components.setPort(hosts.port);
  if (server && !server->empty()) {
    components.setHost(*server + hosts.mainSuffix);
    components.setPath("/~" + *account);
  } else {
    // Without a server the account's own host, under the second, shorter suffix.
    components.setHost(*account + hosts.secondSuffix);
    components.setPath("");
  }
  components.setQueryItems({QueryItem{"Referer", appParams("app")}});
  return components;
}

std::string AccountParams::accountId() const {
  std::lock_guard lock(mutex_);
  return md5(account_.value_or("") + knowledgeBase_.value_or(""));
}

}  // namespace quorvix
