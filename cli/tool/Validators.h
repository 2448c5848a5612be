#pragma once
/// @file
/// Checks for option values, with messages worded for people.

#include <CLI/CLI.hpp>

namespace quorvix::cli {

/// A number of seconds: finite, more than zero (or at least zero with `allowZero`).
CLI::Validator secondsValidator(bool allowZero);

}  // namespace quorvix::cli
