#pragma once

#include <string>
#include <string_view>

namespace quorvix::detail {

/// Fills the first "%@" of a fixed log format with `argument`.
std::string formatLog(std::string_view format, std::string_view argument);
/// Whether log lines are wanted at all (false after `platform::discardLog`):
/// callers may skip building a line when not.
bool logWanted();
/// Logs a fixed format filled with one argument ("URL :: %@"); builds nothing
/// when log lines are discarded.
void logFormat(std::string_view format, std::string_view argument);
/// Replaces the values of the "apiKey" and "sid" query items in `text` by "***".
std::string redactSecrets(std::string_view text);

}  // namespace quorvix::detail
