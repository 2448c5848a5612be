#pragma once
/// @file
/// The command groups. Each adds its commands to the registry; the order of
/// the calls in `builtinCommands()` is the order of the command list in help.

namespace quorvix::cli {

class CommandRegistry;

/// `session`.
void registerSessionCommands(CommandRegistry& registry);
/// `shell` and the commands only the shell has: `stop`, `prepare`, `sleep`.
void registerShellCommands(CommandRegistry& registry);
/// `sandbox`.
void registerSandboxCommands(CommandRegistry& registry);

}  // namespace quorvix::cli
