#pragma once
/// @file
/// A command line (or shell line) that cannot be used.

#include <string>

namespace quorvix::cli {

/// Why the input cannot be used, worded for stderr.
struct UsageError {
  std::string message;
};

}  // namespace quorvix::cli
