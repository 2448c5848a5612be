#pragma once
/// @file
/// The options that come before the command.

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace quorvix::cli {

/// Everything given before the command, as typed (not yet checked beyond its type).
struct GlobalOptions {
  // Where the service lives and which account to use.
  std::optional<std::string> service;
  std::optional<std::string> account;
  std::optional<std::string> knowledgeBase;
  std::optional<std::string> apiKey;
  std::optional<std::string> server;
  std::optional<std::string> labelId;
  std::optional<std::string> referrer;
  /// A PEM bundle of the certificate authorities to trust instead of the system's.
  std::optional<std::string> caFile;
  /// "NAME:VALUE" entries in the order given.
  std::vector<std::string> contexts;
  bool allContextsMandatory = false;

  // What the engine reports about this host application.
  std::string bundleId = "com.quorvix.cli";
  /// Empty until `addGlobalOptions` sets the default (the engine version).
  std::string build;

  // How the tool behaves.
  bool json = false;
  bool log = false;
  double timeoutSeconds = 30;
  double lingerSeconds = 0;
};

/// Declares the global options on `app`, bound to `options`, and fills in the
/// defaults that depend on the engine (the build number).
void addGlobalOptions(CLI::App& app, GlobalOptions& options);

}  // namespace quorvix::cli
