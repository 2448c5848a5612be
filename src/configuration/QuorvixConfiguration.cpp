// The facade's widget configuration: asking for it, fetching it, and applying
// the FAQ groups or label it calls for before the engine counts as prepared.
#include "engine/EngineState.h"
#include "engine/Helpers.h"
#include "engine/ServiceAddress.h"
#include "platform/Log.h"
#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/engine/Quorvix.h"
#include "quorvix/faq/QXFAQGroup.h"

namespace quorvix {

std::shared_ptr<QXConfiguration> Quorvix::configuration() {
  std::lock_guard lock(state_->mutex);
  if (!state_->configuration) state_->configuration = std::make_shared<QXConfiguration>();
  return state_->configuration;
}

void Quorvix::setConfiguration(std::shared_ptr<QXConfiguration> configuration) {
  std::lock_guard lock(state_->mutex);
  state_->configuration = std::move(configuration);
}

QXConfigurationCompletion Quorvix::fetchConfiguration() const {
  std::lock_guard lock(state_->mutex);
  return state_->fetchConfiguration;
}

void Quorvix::setFetchConfiguration(QXConfigurationCompletion callback) {
  std::shared_ptr<QXConfiguration> held;
  bool fetch = false;
  {
    std::lock_guard lock(state_->mutex);
    if (state_->configuration) {
      held = state_->configuration;
    } else if (callback && !state_->fetchConfiguration) {
      // The fetch under way (started by the preparation) will call it.
      state_->fetchConfiguration = std::move(callback);
      return;
    } else {
      // A callback arriving while another is stored is dropped uncalled.
      fetch = state_->accountParams != nullptr;
    }
  }
  if (held) {
    if (callback) callback(held, std::nullopt);
    return;
  }
  if (fetch) fetchCNF(nullptr);
}

void Quorvix::whenConfigured(QXConfigurationCompletion completion) {
  if (!completion) return;
  enum class Next { Answer, Refuse, Wait, Fetch } next;
  std::shared_ptr<QXConfiguration> held;
  std::shared_ptr<AccountParams> params;
  {
    std::lock_guard lock(state_->mutex);
    params = state_->accountParams;
    held = state_->configuration;
    if (state_->isPrepared && held) {
      next = Next::Answer;
    } else if (!params || !params->baseUrlComp()) {
      next = Next::Refuse;
    } else {
      state_->configurationWaiters.push_back(std::move(completion));
      // Joins the fetch under way, or starts one.
      next = state_->configurationFetching ? Next::Wait : Next::Fetch;
      state_->configurationFetching = true;
    }
  }
  switch (next) {
    case Next::Answer:
      return completion(held, std::nullopt);
    case Next::Refuse:
      return completion(nullptr, detail::addressError(params));
    case Next::Fetch:
      return fetchCNF(nullptr);
    case Next::Wait:
      return;
  }
}

void Quorvix::endConfigurationWait(uint64_t preparation, const std::shared_ptr<QXConfiguration>& configuration,
                                   const std::optional<QXError>& error) {
  std::vector<QXConfigurationCompletion> waiters;
  {
    std::lock_guard lock(state_->mutex);
    // The waiters now wait for the newer preparation's fetch.
    if (preparation != state_->preparation) return;
    state_->configurationFetching = false;
    waiters.swap(state_->configurationWaiters);
  }
  for (auto& waiter : waiters) {
    detail::runCatching("A configuration callback", [&] {
      if (configuration) {
        waiter(configuration, std::nullopt);
      } else {
        waiter(nullptr, error ? *error : errors::notValidResponse());
      }
    });
  }
}

std::optional<URLComponents> Quorvix::cnfComponent() const {
  const std::shared_ptr<AccountParams> params = accountParams();
  if (!params) return std::nullopt;
  std::optional<URLComponents> components = params->baseUrlComp();
  if (!components) return std::nullopt;
  components->appendPath("/widget/scripts/cnf.json");
  if (params->knowledgeBase()) components->appendQueryItem("kb", *params->knowledgeBase());
  components->appendQueryItem("isFloat", "true");
  if (auto context = params->quorvixContext()) components->appendQueryItem("context", wrapped(*context));
  return components;
}

void Quorvix::fetchCNF(QXConfigurationCompletion) {
  const std::optional<URLComponents> components = cnfComponent();
  uint64_t preparation = 0;
  {
    std::lock_guard lock(state_->mutex);
    preparation = state_->preparation;
    state_->configurationFetching = components.has_value();
  }
  if (!components) {
    endConfigurationWait(preparation, nullptr, detail::addressError(accountParams()));
    return;
  }
  std::weak_ptr<Quorvix> weakSelf = weak_from_this();
  QXConnection::openConnection(connectionHandler(), *components, [weakSelf, preparation](QXResponse response) {
    auto self = weakSelf.lock();
    if (!self) return;
    // The stored callback, unless the engine was prepared again meanwhile: a
    // configuration asked for an earlier account is of no use any more.
    auto current = [&self, preparation](QXConfigurationCompletion& callback) {
      std::lock_guard lock(self->state_->mutex);
      if (preparation != self->state_->preparation) return false;
      callback = self->state_->fetchConfiguration;
      return true;
    };
    QXConfigurationCompletion callback;
    if (response.error()) {
      if (current(callback) && callback) callback(nullptr, response.error());
      self->endConfigurationWait(preparation, nullptr, response.error());
      return;
    }
    auto configuration = response.typeAs<QXConfiguration>();
    if (!configuration) {
      // The stored callback is not told; `whenConfigured` callers are.
      self->endConfigurationWait(preparation, nullptr, std::nullopt);
      return;
    }
    std::shared_ptr<AccountParams> params;
    {
      std::lock_guard lock(self->state_->mutex);
      if (preparation != self->state_->preparation) return;
      self->state_->configuration = configuration;
      params = self->state_->accountParams;
    }

    // These reads block this (transport completion) thread.
    if (params && params->labelId()) {
      if (auto group = self->label()) configuration->setFaqs(std::vector<std::shared_ptr<QXFAQGroup>>{group});
    } else if (!configuration->useLabels() && configuration->isContextDependent()) {
      const std::optional<Json> list = self->faqList();
      configuration->setFAQs(list ? &*list : nullptr);
    } else if (params && params->quorvixContext() && !params->apiKey()) {
      const std::optional<JsonArray> groups = self->faqGroup();
      const std::optional<Json> value = groups ? std::optional<Json>(*groups) : std::nullopt;
      configuration->setFAQs(value ? &*value : nullptr);
    }

    if (!current(callback)) return;
    if (callback) callback(configuration, std::nullopt);
    self->setIsPrepared(true);
    self->endConfigurationWait(preparation, configuration, std::nullopt);
  });
}

void Quorvix::preFetchAndCahceFAQs() {}

}  // namespace quorvix
