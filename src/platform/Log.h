#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quorvix::detail {

/// Fills the first "%@" of a fixed log format with `argument`.
std::string formatLog(std::string_view format, std::string_view argument);
/// Whether log lines are wanted at all (false after `platform::discardLog`):
/// callers may skip building a line when not.
bool logWanted();
/// Logs a fixed format filled with one argument ("URL :: %@"); builds nothing
/// when log lines are discarded.
void logFormat(std::string_view format, std::string_view argument);
/// Logs that host code run on one of the engine's threads threw: "Quorvix:
/// <where> threw: <what>". Never throws, even when the log sink does.
void logThrown(std::string_view where, std::string_view what) noexcept;

/// Runs host code (a completion, a delegate call, a delayed call) on one of the
/// engine's threads: whatever it throws is logged and goes no further, so the
/// thread, and the process, live on.
template <class Task>
void runCatching(std::string_view where, Task&& task) noexcept {
  try {
    std::forward<Task>(task)();
  } catch (const std::exception& error) {
    logThrown(where, error.what());
  } catch (...) {
    logThrown(where, "an unknown exception");
  }
}

/// Replaces the values of the "apiKey" and "sid" query items in `text` by "***".
std::string redactSecrets(std::string_view text);
/// The same, or nothing when `text` holds no such item (no copy is made).
std::optional<std::string> redactedSecrets(std::string_view text);

}  // namespace quorvix::detail
