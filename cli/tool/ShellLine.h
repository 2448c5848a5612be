#pragma once
/// @file
/// Splitting one line of `quorvix shell` input into words.

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tool/UsageError.h"

namespace quorvix::cli {

/// Splits a line into words the way a POSIX shell would, without expansions:
/// blanks separate words; 'single quotes' keep everything literally;
/// "double quotes" keep everything but let \" and \\ stand for " and \;
/// outside quotes a backslash takes the next character literally; quoted and
/// unquoted parts that touch form one word ("" is an empty word); an unquoted
/// # at the start of a word comments out the rest of the line.
/// An unterminated quote or a trailing backslash is a usage error.
std::variant<std::vector<std::string>, UsageError> splitShellLine(std::string_view line);

}  // namespace quorvix::cli
