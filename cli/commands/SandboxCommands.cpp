// The sandbox command: the loopback reference service in the foreground.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
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

// Why 127.0.0.1:`port` cannot be bound, found by trying it as the service does.
std::string bindProblem(int port) {
  const int sock = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (sock < 0) return std::strerror(errno);
  const int yes = 1;
  ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  std::string problem;
  if (::bind(sock, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    problem = errno == EADDRINUSE ? "the port is already in use" : std::strerror(errno);
  } else if (::listen(sock, 1) != 0) {
    problem = errno == EADDRINUSE ? "the port is already in use" : std::strerror(errno);
  }
  ::close(sock);
  return problem;
}

ExitCode runSandbox(Runtime& runtime, int port) {
  sandbox::SandboxOptions options;
  options.port = port;
  options.bindAddress = kBindAddress;
  sandbox::SandboxService service(options);

  // Catch Ctrl-C before serving, so that a signal always ends in a clean stop.
  InterruptCatcher catcher;
  const int bound = service.start();
  if (bound == 0) {
    const std::string problem = port == 0 ? std::string() : bindProblem(port);
    runtime.output().message("cannot listen on " + std::string(kBindAddress) + ":" + std::to_string(port) +
                             (problem.empty() ? "" : ": " + problem) +
                             (port == 0 ? "" : " (choose another --port, or --port 0 for a free one)"));
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
                 "--account that one uses the demo account too. A port that is already in use is refused "
                 "(exit code 1).",
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
