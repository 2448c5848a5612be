#pragma once
// The engine's log, silenced for the fuzz targets: millions of inputs would
// bury the fuzzer's own output under lines about malformed replies.

#include "quorvix/platform/Platform.h"

namespace quorvix::fuzz {

/// Drops every log line from here on; cheap to call on every input.
inline void quietLog() {
  static const bool quiet = [] {
    platform::setLogSink([](std::string_view) {});
    return true;
  }();
  (void)quiet;
}

}  // namespace quorvix::fuzz
