/// @file
/// quorvix-sandbox: serves the loopback service until SIGINT or SIGTERM.

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "quorvix/sandbox/SandboxService.h"

namespace {

using quorvix::sandbox::SandboxOptions;
using quorvix::sandbox::SandboxService;

constexpr int kUsageExit = 2;

void printUsage(std::ostream& out) {
  out << "usage: quorvix-sandbox [--port N] [--bind ADDR] [--session-timeout SECONDS]\n"
         "  --port N                   port to listen on (default 0: any free port)\n"
         "  --bind ADDR                address to bind (default 127.0.0.1)\n"
         "  --session-timeout SECONDS  idle time after which a session expires (default 600)\n";
}

std::optional<int> parsePort(const std::string& text) {
  try {
    std::size_t used = 0;
    const int port = std::stoi(text, &used);
    if (used == text.size() && port >= 0 && port <= 65535) {
      return port;
    }
  } catch (const std::exception&) {
  }
  return std::nullopt;
}

std::optional<double> parseSeconds(const std::string& text) {
  try {
    std::size_t used = 0;
    const double seconds = std::stod(text, &used);
    if (used == text.size() && seconds > 0) {
      return seconds;
    }
  } catch (const std::exception&) {
  }
  return std::nullopt;
}

/// The options, or nothing (after printing why) when the arguments are wrong.
std::optional<SandboxOptions> parseArguments(int argc, char** argv, bool& helpAsked) {
  SandboxOptions options;
  for (int i = 1; i < argc; ++i) {
    const std::string_view flag = argv[i];
    if (flag == "--help" || flag == "-h") {
      helpAsked = true;
      return std::nullopt;
    }
    if (flag != "--port" && flag != "--bind" && flag != "--session-timeout") {
      std::cerr << "quorvix-sandbox: unknown argument " << flag << "\n";
      return std::nullopt;
    }
    if (i + 1 >= argc) {
      std::cerr << "quorvix-sandbox: " << flag << " needs a value\n";
      return std::nullopt;
    }
    const std::string value = argv[++i];
    if (flag == "--port") {
      const std::optional<int> port = parsePort(value);
      if (!port) {
        std::cerr << "quorvix-sandbox: invalid port \"" << value << "\"\n";
        return std::nullopt;
      }
      options.port = *port;
    } else if (flag == "--bind") {
      options.bindAddress = value;
    } else if (flag == "--session-timeout") {
      const std::optional<double> seconds = parseSeconds(value);
      if (!seconds) {
        std::cerr << "quorvix-sandbox: invalid session time-out \"" << value << "\"\n";
        return std::nullopt;
      }
      options.sessionTimeoutSeconds = *seconds;
    }
  }
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  bool helpAsked = false;
  const std::optional<SandboxOptions> options = parseArguments(argc, argv, helpAsked);
  if (!options) {
    printUsage(helpAsked ? std::cout : std::cerr);
    return kUsageExit;
  }

  // Block the stop signals before any thread starts, so every thread inherits
  // the mask and only sigwait below receives them.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGINT);
  sigaddset(&stopSignals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

  SandboxService service(*options);
  if (service.start() == 0) {
    std::cerr << "quorvix-sandbox: cannot listen on " << options->bindAddress << " port " << options->port << "\n";
    return EXIT_FAILURE;
  }
  std::cout << "quorvix-sandbox listening on " << service.baseURL() << " (account " << SandboxService::kDemoAccount
            << ", knowledge base " << SandboxService::kDemoKnowledgeBase << ")" << std::endl;

  int received = 0;
  sigwait(&stopSignals, &received);
  service.stop();
  return EXIT_SUCCESS;
}
