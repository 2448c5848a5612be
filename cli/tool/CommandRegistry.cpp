#include "tool/CommandRegistry.h"

#include <sstream>

#include <CLI/CLI.hpp>

#include "commands/Commands.h"

namespace quorvix::cli {
namespace {

constexpr std::size_t kHelpWidth = 96;

/// Breaks each paragraph of `text` into lines of at most `width` characters
/// (a longer word gets a line of its own); CLI11 prints footers unwrapped.
std::string wrapText(std::string_view text, std::size_t width) {
  std::string wrapped;
  std::size_t column = 0;
  std::size_t i = 0;
  while (i < text.size()) {
    if (text[i] == '\n') {
      wrapped += '\n';
      column = 0;
      ++i;
      continue;
    }
    if (text[i] == ' ') {
      ++i;
      continue;
    }
    const auto end = text.find_first_of(" \n", i);
    const auto word = text.substr(i, end == std::string_view::npos ? std::string_view::npos : end - i);
    if (column > 0 && column + 1 + word.size() > width) {
      wrapped += '\n';
      column = 0;
    } else if (column > 0) {
      wrapped += ' ';
      ++column;
    }
    wrapped += word;
    column += word.size();
    i += word.size();
  }
  return wrapped;
}

}  // namespace

void CommandRegistry::add(CommandDef command) { commands_.push_back(std::move(command)); }

const CommandDef* CommandRegistry::find(std::string_view name) const {
  for (const auto& command : commands_) {
    if (command.name == name) return &command;
  }
  return nullptr;
}

const CommandRegistry& builtinCommands() {
  static const CommandRegistry registry = [] {
    CommandRegistry commands;
    registerFaqCommands(commands);
    registerSearchCommands(commands);
    registerSessionCommands(commands);
    registerShellCommands(commands);
    registerChatCommands(commands);
    registerSandboxCommands(commands);
    registerDemoCommands(commands);
    return commands;
  }();
  return registry;
}

bool CommandSet::available(const CommandDef& command, bool shell) {
  switch (command.scope) {
    case CommandScope::Everywhere:
      return true;
    case CommandScope::CommandLine:
      return !shell;
    case CommandScope::ShellOnly:
      return shell;
  }
  return false;
}

CommandSet::CommandSet(CLI::App& app, const CommandRegistry& registry, bool shell)
    : registry_(registry), shell_(shell) {
  for (const auto& command : registry.all()) {
    if (!available(command, shell)) continue;
    CLI::App* sub = app.add_subcommand(command.name, command.summary);
    sub->group("Commands");
    if (!command.details.empty()) sub->footer(wrapText(command.details, kHelpWidth));
    entries_.emplace_back(sub, Chosen{&command, command.define(*sub)});
  }
}

std::optional<CommandSet::Chosen> CommandSet::chosen() const {
  for (const auto& [sub, chosen] : entries_) {
    if (sub->parsed()) return chosen;
  }
  return std::nullopt;
}

}  // namespace quorvix::cli

namespace quorvix::cli {

CommandSet::Stop CommandSet::explain(const CLI::App& app, const CLI::ParseError& error) const {
  std::ostringstream out;
  std::ostringstream err;
  if (app.exit(error, out, err) == 0) return {true, out.str()};

  if (!chosen()) {
    const auto rest = app.remaining();
    if (!rest.empty()) {
      const auto& name = rest.front();
      const auto* command = registry_.find(name);
      if (!command) return {false, "unknown command '" + name + "'"};
      if (!available(*command, shell_)) {
        return {false, shell_ ? "'" + name + "' cannot be used inside the shell"
                              : "'" + name + "' can be used only inside the shell"};
      }
    }
    if (dynamic_cast<const CLI::RequiredError*>(&error)) return {false, "no command given"};
  }
  std::string text = error.what();
  // A global option after the command: say where it belongs. (Inside the shell
  // the parser knows no global options, so this names nothing there.)
  for (const auto& [sub, entry] : entries_) {
    if (!sub->parsed()) continue;
    for (const auto& word : sub->remaining()) {
      const auto name = word.substr(0, word.find('='));
      if (name.starts_with("-") && app.get_option_no_throw(name) != nullptr) {
        return {false, text + " (" + name + " goes before the command)"};
      }
    }
  }
  return {false, text};
}

}  // namespace quorvix::cli
