// The facade's search, suggestion and context operations.
#include "engine/EngineState.h"
#include "engine/Helpers.h"
#include "engine/ServiceAddress.h"
#include "quorvix/engine/Quorvix.h"
#include "quorvix/search/QXAutoCompleteResponse.h"
#include "quorvix/search/QXSearchResponse.h"

namespace quorvix {
namespace {

constexpr std::string_view kSearchPath = "/api/widget/v1/q.js";
constexpr std::string_view kAutoCompletePath = "/api/kb/v1/autoComplete";
constexpr std::string_view kContextValuesPath = "/api/widget/v1/contextvalues.js";
constexpr std::string_view kSetParamsPath = "/api/widget/v1/setParams";

}  // namespace

void Quorvix::searchText(std::optional<std::string> text, SearchCompletion completion) {
  std::shared_ptr<QXSearchResponse> cached;
  {
    std::lock_guard lock(state_->mutex);
    // The cache is used only once the host has read it (see cachedSearches).
    if (text && state_->cachedSearches) {
      if (auto found = state_->cachedSearches->find(*text); found != state_->cachedSearches->end()) cached = found->second;
    }
  }
  if (cached) {
    if (completion) completion(std::move(cached), std::nullopt);
    return;
  }
  auto url = detail::serviceAddress(accountParams(), kSearchPath);
  if (!url) {
    if (completion) completion(nullptr, detail::addressError(accountParams()));
    return;
  }
  url->setQueryItems({{"text", text.value_or("")}});
  executeRequest(std::move(*url), [weak = weak_from_this(), text, completion = std::move(completion)](QXResponse response) {
    if (response.error()) {
      if (completion) completion(nullptr, response.error());
      return;
    }
    auto result = response.typeAs<QXSearchResponse>();
    if (!result) return;  // neither result nor error: nothing to say
    if (auto self = weak.lock(); self && text) {
      std::lock_guard lock(self->state_->mutex);
      if (self->state_->cachedSearches) (*self->state_->cachedSearches)[*text] = result;
    }
    if (completion) completion(std::move(result), std::nullopt);
  });
}

SearchCache Quorvix::cachedSearches() {
  std::lock_guard lock(state_->mutex);
  if (!state_->cachedSearches) state_->cachedSearches.emplace();
  return *state_->cachedSearches;
}

void Quorvix::setCachedSearches(SearchCache cache) {
  std::lock_guard lock(state_->mutex);
  state_->cachedSearches = std::move(cache);
}

void Quorvix::suggestionsForText(std::optional<std::string> text, SuggestionCompletion completion) {
  std::shared_ptr<QXAutoCompleteResponse> cached;
  {
    std::lock_guard lock(state_->mutex);
    if (text && state_->cachedSuggestions) {
      if (auto found = state_->cachedSuggestions->find(*text); found != state_->cachedSuggestions->end()) cached = found->second;
    }
  }
  if (cached) {
    if (completion) completion(std::move(cached), std::nullopt);
    return;
  }
  auto url = detail::serviceAddress(accountParams(), kAutoCompletePath);
  if (!url) {
    if (completion) completion(nullptr, detail::addressError(accountParams()));
    return;
  }
  url->setQueryItems({{"text", text.value_or("")}, {"stemming", "true"}});
  executeRequest(std::move(*url), [weak = weak_from_this(), text, completion = std::move(completion)](QXResponse response) {
    // A result wins over an error here (an HTTP error can still carry suggestions).
    if (auto result = response.typeAs<QXAutoCompleteResponse>()) {
      if (auto self = weak.lock(); self && text) {
        std::lock_guard lock(self->state_->mutex);
        if (!self->state_->cachedSuggestions) self->state_->cachedSuggestions.emplace();
        (*self->state_->cachedSuggestions)[*text] = result;
      }
      if (completion) completion(std::move(result), std::nullopt);
    } else if (response.error()) {
      if (completion) completion(nullptr, response.error());
    }
  });
}

SuggestionCache Quorvix::cachedSuggestions() {
  std::lock_guard lock(state_->mutex);
  if (!state_->cachedSuggestions) state_->cachedSuggestions.emplace();
  return *state_->cachedSuggestions;
}

void Quorvix::setCachedSuggestions(SuggestionCache cache) {
  std::lock_guard lock(state_->mutex);
  state_->cachedSuggestions = std::move(cache);
}

void Quorvix::contextValue(std::string contexts, ContextValueCompletion completion) {
  auto params = accountParams();
  auto url = detail::serviceAddress(params, kContextValuesPath);
  if (!url) {
    if (completion) completion(std::nullopt, detail::addressError(params));
    return;
  }
  std::vector<QueryItem> items{{"account", params->account()}, {"contexts", std::move(contexts)}, {"cb", ""}};
  if (params->knowledgeBase()) items.push_back({"kb", params->knowledgeBase()});
  url->setQueryItems(std::move(items));
  executeRequest(std::move(*url), [completion = std::move(completion)](QXResponse response) {
    if (!completion) return;
    if (response.error()) {
      completion(std::nullopt, response.error());
    } else if (const Json* result = response.typeJson()) {
      completion(*result, std::nullopt);
    }
  });
}

void Quorvix::changeContext(std::optional<JsonObject> context, ChangeContextCompletion completion) {
  auto params = accountParams();
  auto url = detail::serviceAddress(params, kSetParamsPath);
  if (!url) {
    if (completion) completion(false, detail::addressError(params));
    return;
  }
  url->setQueryItems({{"cb", ""}});
  if (context && !context->empty()) {
    // One entry is expected; with more, the first one counts.
    const auto& first = *context->begin();
    auto dynamic = std::make_shared<DynamicContext>();
    dynamic->setName(std::string(first.key()));
    dynamic->setContext(describe(first.value()));
    params->appendDynamicContext(std::move(dynamic));
  }
  if (auto effective = params->quorvixContext()) url->appendQueryItem("context", wrapped(*effective));
  executeRequest(std::move(*url), [completion = std::move(completion)](QXResponse response) {
    if (!completion) return;
    if (response.status() == 200) {
      completion(true, std::nullopt);
    } else {
      completion(false, response.error());
    }
  });
}

}  // namespace quorvix
