#pragma once
/// @file
/// The table of commands: name, help, where it may be used, its arguments and
/// what it does. Each command group registers its commands here.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/ExitCode.h"

namespace CLI {
class App;
class ParseError;
}

namespace quorvix::cli {

class Runtime;

/// What a command does once its arguments are parsed.
using CommandAction = std::function<ExitCode(Runtime&)>;

/// Where a command may be used.
enum class CommandScope {
  Everywhere,   ///< on the command line and inside `shell`
  CommandLine,  ///< on the command line only
  ShellOnly,    ///< inside `shell` only
};

/// One command.
struct CommandDef {
  std::string name;
  /// One line for the command list.
  std::string summary;
  /// More text for `COMMAND --help`; may be empty.
  std::string details;
  CommandScope scope = CommandScope::Everywhere;
  /// Whether the command drives the engine (and so gets a prepared engine and,
  /// without --service and --account, the embedded sandbox).
  bool usesEngine = true;
  /// Declares the command's arguments on its subcommand (binding them to state
  /// it owns) and returns the action that runs with the parsed values.
  std::function<CommandAction(CLI::App& subcommand)> define;
};

/// The commands, in the order they are listed in help.
class CommandRegistry {
 public:
  void add(CommandDef command);
  const std::vector<CommandDef>& all() const { return commands_; }
  const CommandDef* find(std::string_view name) const;

 private:
  std::vector<CommandDef> commands_;
};

/// Every command of the tool.
const CommandRegistry& builtinCommands();

/// The commands of one scope declared as subcommands of a CLI11 app; after the
/// app has parsed, tells which one was given.
class CommandSet {
 public:
  /// `shell` selects the commands usable inside `shell`; otherwise those usable on the command line.
  CommandSet(CLI::App& app, const CommandRegistry& registry, bool shell);

  struct Chosen {
    const CommandDef* command = nullptr;
    CommandAction action;
  };
  /// The command the parsed arguments named, if any.
  std::optional<Chosen> chosen() const;

  /// Whether `command` is usable in this set's scope.
  static bool available(const CommandDef& command, bool shell);

  /// What to print when `app.parse` stopped with `error`.
  struct Stop {
    /// Help or version text for stdout (the run goes on with exit code 0)...
    bool isHelp = false;
    /// ...or the usage error for stderr: an unknown command, one from the
    /// other scope and a missing command are named plainly.
    std::string text;
  };
  Stop explain(const CLI::App& app, const CLI::ParseError& error) const;

 private:
  const CommandRegistry& registry_;
  bool shell_;
  std::vector<std::pair<CLI::App*, Chosen>> entries_;
};

}  // namespace quorvix::cli
