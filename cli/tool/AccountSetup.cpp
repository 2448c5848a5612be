#include "tool/AccountSetup.h"

#include <quorvix/sandbox/SandboxService.h>

#include "tool/Output.h"

namespace quorvix::cli {

std::variant<ContextEntry, UsageError> parseContextOption(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos) {
    return UsageError{"--context wants NAME:VALUE, got \"" + std::string(text) + "\""};
  }
  if (colon == 0) {
    return UsageError{"--context \"" + std::string(text) + "\" has no name before the ':'"};
  }
  return ContextEntry{std::string(text.substr(0, colon)), std::string(text.substr(colon + 1))};
}

std::variant<std::optional<JsonObject>, UsageError> contextDictionary(const std::vector<std::string>& entries) {
  if (entries.empty()) return std::optional<JsonObject>{};
  JsonObject dictionary;
  for (const auto& text : entries) {
    auto parsed = parseContextOption(text);
    if (auto* error = std::get_if<UsageError>(&parsed)) return *error;
    auto& entry = std::get<ContextEntry>(parsed);
    dictionary[entry.name] = entry.value;
  }
  return std::optional<JsonObject>{std::move(dictionary)};
}

FallbackAccount demoAccount() {
  return {sandbox::SandboxService::kDemoAccount, sandbox::SandboxService::kDemoKnowledgeBase,
          sandbox::SandboxService::kDemoApiKey};
}

std::variant<QXServiceHosts, UsageError> serviceHostsFor(std::string_view base) {
  auto hosts = QXServiceHosts::fromServiceBase(base);
  if (auto* error = std::get_if<QXError>(&hosts)) {
    return UsageError{"--service " + std::string(base) + ": " + errorMessage(*error)};
  }
  return std::get<QXServiceHosts>(std::move(hosts));
}

std::variant<AccountPlan, UsageError> planAccount(const GlobalOptions& options) {
  AccountPlan plan;

  if (options.service) {
    auto hosts = serviceHostsFor(*options.service);
    if (auto* error = std::get_if<UsageError>(&hosts)) return *error;
    plan.service = ServiceKind::Given;
    plan.hosts = std::get<QXServiceHosts>(std::move(hosts));
  } else {
    plan.service = options.account ? ServiceKind::Production : ServiceKind::Embedded;
  }

  auto context = contextDictionary(options.contexts);
  if (auto* error = std::get_if<UsageError>(&context)) return *error;

  auto params = std::make_shared<AccountParams>();
  if (options.account) {
    params->setAccount(options.account);
    params->setKnowledgeBase(options.knowledgeBase);
    params->setApiKey(options.apiKey);
  } else {
    const auto demo = demoAccount();
    params->setAccount(demo.account);
    params->setKnowledgeBase(options.knowledgeBase.value_or(demo.knowledgeBase));
    params->setApiKey(options.apiKey.value_or(demo.apiKey));
  }
  params->setServer(options.server);
  params->setLabelId(options.labelId);
  params->setReferrer(options.referrer);
  params->setQuorvixContext(std::get<std::optional<JsonObject>>(std::move(context)));
  params->setAllContextsMandatory(options.allContextsMandatory);
  plan.params = std::move(params);

  plan.hostInfo = QXHostInfo{options.bundleId, options.build};
  plan.caFile = options.caFile;
  return plan;
}

}  // namespace quorvix::cli
