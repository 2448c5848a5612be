// The sandbox command: the loopback reference service in the foreground.

#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <quorvix/sandbox/SandboxService.h>

#include "commands/Commands.h"
#include "tool/Interrupt.h"
#include "tool/Runtime.h"

namespace quorvix::cli {
namespace {

constexpr const char* kBindAddress = "127.0.0.1";

ExitCode runSandbox(Runtime& runtime, int port) {
  sandbox::SandboxOptions options;
  options.port = port;
  options.bindAddress = kBindAddress;
  sandbox::SandboxService service(options);

  // Catch Ctrl-C before serving, so that a signal always ends in a clean stop.
  InterruptCatcher catcher;
  const int bound = service.start();
  if (bound == 0) {
    runtime.output().message("could not listen on " + std::string(kBindAddress) + ":" + std::to_string(port));
    return ExitCode::EngineError;
  }

  TextResult text;
  text.heading = "quorvix-sandbox listening on " + service.baseURL();
  JsonObject json;
  json["baseURL"] = service.baseURL();
  json["port"] = bound;
  runtime.output().result(text, json);
  catcher.waitForSignal();
  service.stop();
  return ExitCode::Success;
}

}  // namespace

void registerSandboxCommands(CommandRegistry& registry) {
  registry.add(CommandDef{
      .name = "sandbox",
      .summary = "Run the sandbox service in the foreground on 127.0.0.1 until Ctrl-C",
      .details = std::string("The sandbox answers every endpoint the engine calls for the demo account '") +
                 sandbox::SandboxService::kDemoAccount + "' (knowledge base '" +
                 sandbox::SandboxService::kDemoKnowledgeBase + "', API key '" +
                 sandbox::SandboxService::kDemoApiKey +
                 "'). Point another quorvix at it with --service http://localhost:PORT; without "
                 "--account that one uses the demo account too.",
      .scope = CommandScope::CommandLine,
      .usesEngine = false,
      .define = [](CLI::App& sub) -> CommandAction {
        auto port = std::make_shared<int>(0);
        sub.add_option("--port", *port, "Port to listen on (0 picks a free one)")
            ->type_name("N")
            ->capture_default_str()
            ->check(CLI::Range(0, 65535));
        return [port](Runtime& runtime) { return runSandbox(runtime, *port); };
      },
  });
}

}  // namespace quorvix::cli
