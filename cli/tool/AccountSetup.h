#pragma once
/// @file
/// Turns the global options into what the engine is given: the account
/// parameters, the host information and the service hosts.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "quorvix/core/Json.h"
#include "quorvix/engine/AccountParams.h"
#include "quorvix/platform/Platform.h"
#include "quorvix/platform/ServiceHosts.h"
#include "tool/GlobalOptions.h"
#include "tool/UsageError.h"

namespace quorvix::cli {

/// One "--context NAME:VALUE" entry.
struct ContextEntry {
  std::string name;
  std::string value;
};

/// Splits "NAME:VALUE" at the first ":" (the value may hold more colons).
/// The name must not be empty; the value may be.
std::variant<ContextEntry, UsageError> parseContextOption(std::string_view text);

/// The static context dictionary of the given entries, in the order given
/// (a repeated name keeps its first place and takes the last value); nothing
/// when there are no entries, so that no context is sent at all.
std::variant<std::optional<JsonObject>, UsageError> contextDictionary(const std::vector<std::string>& entries);

/// The account used when none is named: the sandbox's demo account.
struct FallbackAccount {
  std::string account;
  std::string knowledgeBase;
  std::string apiKey;
};

/// The sandbox's demo account.
FallbackAccount demoAccount();

/// Where the engine is pointed.
enum class ServiceKind {
  Embedded,    ///< a sandbox started inside this process (neither --service nor --account)
  Given,       ///< the --service base
  Production,  ///< the default hosts (--account without --service)
};

/// Everything the engine is set up with for one run.
struct AccountPlan {
  ServiceKind service = ServiceKind::Production;
  /// The hosts of --service; nothing for the other kinds (the embedded
  /// sandbox's hosts are known only once it runs).
  std::optional<QXServiceHosts> hosts;
  std::shared_ptr<AccountParams> params;
  QXHostInfo hostInfo;
  /// The --ca-file bundle, when given.
  std::optional<std::string> caFile;
};

/// Checks the options and maps them. Without --account the demo account
/// fills the account and whichever of knowledge base and API key was not given.
/// Changes no process-wide state.
std::variant<AccountPlan, UsageError> planAccount(const GlobalOptions& options);

/// The service hosts for a service base, or why that base is refused.
std::variant<QXServiceHosts, UsageError> serviceHostsFor(std::string_view base);

}  // namespace quorvix::cli
