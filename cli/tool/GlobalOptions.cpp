#include "tool/GlobalOptions.h"

#include <CLI/CLI.hpp>

#include "engine/Helpers.h"
#include "tool/Validators.h"

namespace quorvix::cli {
namespace {

constexpr const char* kServiceGroup = "Service and account";
constexpr const char* kHostGroup = "Host application";
constexpr const char* kOutputGroup = "Behaviour";

CLI::Option* addOptionalText(CLI::App& app, const std::string& name, std::optional<std::string>& target,
                             const std::string& description, const char* group) {
  return app
      .add_option_function<std::string>(
          name, [&target](const std::string& value) { target = value; }, description)
      ->group(group);
}

}  // namespace

void addGlobalOptions(CLI::App& app, GlobalOptions& options) {
  options.build = engineVersion();

  addOptionalText(app, "--service", options.service,
                  "Service base: https://HOST[:PORT], or http://HOST:PORT for a loopback HOST "
                  "(localhost, *.localhost, 127.0.0.1, [::1])",
                  kServiceGroup)
      ->type_name("URL");
  addOptionalText(app, "--account", options.account,
                  "Account name (default: the sandbox's demo account)",
                  kServiceGroup)
      ->type_name("NAME");
  addOptionalText(app, "--kb", options.knowledgeBase, "Knowledge base name", kServiceGroup)->type_name("NAME");
  addOptionalText(app, "--api-key", options.apiKey, "API key", kServiceGroup)->type_name("KEY");
  addOptionalText(app, "--server", options.server, "Server name", kServiceGroup)
      ->type_name("NAME");
  addOptionalText(app, "--label-id", options.labelId, "Label id", kServiceGroup)->type_name("ID");
  addOptionalText(app, "--referrer", options.referrer, "Referrer sent with searches (default \"mobile\")",
                  kServiceGroup)
      ->type_name("TEXT");
  app.add_option_function<std::string>(
         "--ca-file", [&options](const std::string& path) { options.caFile = path; },
         "Trust the certificate authorities of this PEM bundle instead of the system's (verification stays on)")
      ->type_name("PATH")
      ->check(CLI::ExistingFile)
      ->group(kServiceGroup);
  app.add_option("--context", options.contexts,
                 "Static context entry; repeatable, order kept")
      ->type_name("NAME:VALUE")
      ->group(kServiceGroup)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->expected(1)
      ->allow_extra_args(false);
  app.add_flag("--all-contexts-mandatory", options.allContextsMandatory,
               "Set allContextsMandatory")
      ->group(kServiceGroup);

  app.add_option("--bundle-id", options.bundleId, "Bundle identifier the engine reports")
      ->type_name("ID")
      ->capture_default_str()
      ->group(kHostGroup);
  app.add_option("--build", options.build, "Build number the engine reports")
      ->type_name("N")
      ->capture_default_str()
      ->group(kHostGroup);

  app.add_flag("--json", options.json,
               "Print each result as one line of JSON")
      ->group(kOutputGroup);
  app.add_flag("--log", options.log, "Print the engine's log lines on stderr")->group(kOutputGroup);
  app.add_option("--timeout", options.timeoutSeconds,
                 "How long a command waits for its answer")
      ->type_name("SECONDS")
      ->capture_default_str()
      ->check(secondsValidator(/*allowZero=*/false))
      ->group(kOutputGroup);
  app.add_option("--linger", options.lingerSeconds,
                 "Stay alive (session, keep-alive) this long after the last command")
      ->type_name("SECONDS")
      ->capture_default_str()
      ->check(secondsValidator(/*allowZero=*/true))
      ->group(kOutputGroup);
}

}  // namespace quorvix::cli
