#pragma once
/// @file
/// The command groups. Each adds its commands to the registry; the order of
/// the calls in `builtinCommands()` is the order of the command list in help.

#include <string>
#include <vector>

#include "tool/ExitCode.h"

namespace quorvix::cli {

class CommandRegistry;
class Runtime;

/// Parses one command's words (as a shell line gives them) and runs it on the
/// runtime's engine; `where` prefixes usage messages ("line 3: ").
ExitCode runShellCommand(Runtime& runtime, const std::vector<std::string>& words, const std::string& where);
/// The same for the commands offered on the command line (`shell` false) or inside the shell.
ExitCode runCommandWords(Runtime& runtime, const std::vector<std::string>& words, const std::string& where, bool shell);

/// `config`, `faq-list`, `label-faq`, `labels`, `answer` and `like`.
void registerFaqCommands(CommandRegistry& registry);
/// `search`, `suggest`, `contexts`, `set-context`, `channels`, `report` and `track`.
void registerSearchCommands(CommandRegistry& registry);
/// `session`.
void registerSessionCommands(CommandRegistry& registry);
/// `shell` and the commands only the shell has: `stop`, `prepare`, `sleep`.
void registerShellCommands(CommandRegistry& registry);
/// `chat`.
void registerChatCommands(CommandRegistry& registry);
/// `sandbox`.
void registerSandboxCommands(CommandRegistry& registry);
/// `demo`.
void registerDemoCommands(CommandRegistry& registry);

}  // namespace quorvix::cli
