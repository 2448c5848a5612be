#pragma once
/// @file
/// The files of sandbox/data, compiled into the library at build time.

#include <optional>
#include <string_view>

namespace quorvix::sandbox {

/// The contents of the data file `name` ("accounts.json"), or nothing when no
/// such file was embedded.
std::optional<std::string_view> embeddedFile(std::string_view name);

}  // namespace quorvix::sandbox
