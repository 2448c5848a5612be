#pragma once
/// @file
/// The seams through which the host adapts the engine to its platform.
///
/// Every seam has a working default, so a host that sets nothing gets: a
/// serial dispatcher thread as main executor, one timer thread as scheduler,
/// log lines on stderr, the executable's name and build "0" as host
/// information, the production service hosts, and `$XDG_DATA_HOME` (else
/// `$HOME/.local/share`) as storage root. Setters may be called at any time
/// and from any thread; work already queued keeps the seam it was queued on.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quorvix/core/QXError.h"
#include "quorvix/platform/MainExecutor.h"
#include "quorvix/platform/Scheduler.h"
#include "quorvix/platform/ServiceHosts.h"

namespace quorvix {

/// Receives every log line of the engine, already formatted and with secrets
/// ("apiKey" and "sid" values) replaced by "***".
using LogSink = std::function<void(std::string_view line)>;

/// What the engine reports about the host application.
struct QXHostInfo {
  /// The host application's bundle identifier.
  std::string bundleIdentifier;
  /// The host application's build number ("CFBundleVersion").
  std::string buildNumber;
};

/// Process-wide platform seams.
namespace platform {

/// The installed main executor (the default one when none is installed).
std::shared_ptr<MainExecutor> mainExecutor();
/// Installs the main executor; nullptr restores the default.
void setMainExecutor(std::shared_ptr<MainExecutor> executor);

/// The installed scheduler (the default one when none is installed).
std::shared_ptr<Scheduler> scheduler();
/// Installs the scheduler; nullptr restores the default.
void setScheduler(std::shared_ptr<Scheduler> scheduler);

/// Installs the log sink; an empty function restores the default (stderr).
void setLogSink(LogSink sink);
/// Drops every log line from now on without even formatting it, until
/// `setLogSink` installs a sink again. Cheaper than a sink that ignores lines.
void discardLog();
/// Sends one line to the log sink, secrets redacted.
void log(std::string_view line);

/// What the engine reports about the host application.
QXHostInfo hostInfo();
/// Replaces `hostInfo()`.
void setHostInfo(QXHostInfo info);

/// The service hosts in use.
QXServiceHosts serviceHosts();
/// Installs the service hosts; refused (and nothing changed) when they fail
/// `QXServiceHosts::validate`.
std::optional<QXError> setServiceHosts(QXServiceHosts hosts);

/// The folder under which the answer store's "/QuorvixFolder" lives.
std::string storageRoot();
/// Replaces `storageRoot()`.
void setStorageRoot(std::string path);

/// Trusts the certificate authorities of the PEM bundle at `path` instead of
/// the system store, for requests the default transport sets up from now on;
/// an empty path restores the system store. Peer and host verification stay on.
void setCAFile(std::string path);

}  // namespace platform
}  // namespace quorvix
