#pragma once
/// @file
/// Where the service lives.

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "quorvix/core/QXError.h"

namespace quorvix {

/// The service's host names. Account hosts are `account + secondSuffix`,
/// server hosts `server + mainSuffix`, and the configuration and static FAQ
/// files live on `fixedHost`. `scheme` is "https"; "http" (with a `port`) is
/// accepted only when every host is a loopback host (`localhost`,
/// `*.localhost`, `127.0.0.1`, `::1`), for development and tests.
struct QXServiceHosts {
  /// "https", or "http" for loopback hosts.
  std::string scheme = "https";
  /// Appended to a server name.
  std::string mainSuffix = ".quorvix.com";
  /// Appended to an account name.
  std::string secondSuffix = ".quorvix.net";
  /// The host of the configuration and static FAQ files.
  std::string fixedHost = "cdn.quorvix.com";
  /// The port, when not the scheme's.
  std::optional<int> port;

  /// Hosts for "https://HOST[:PORT]" or "http://LOOPBACK:PORT" (localhost, *.localhost, 127.0.0.1, [::1]): fixed host
  /// HOST, suffixes "." + HOST (".localhost" for a loopback address, which has no names under it). An error (domain
  /// "com.quorvix.engine", code `errors::kBadServiceHosts` or `errors::kUnsupportedServiceScheme`) for anything else.
  static std::variant<QXServiceHosts, QXError> fromServiceBase(std::string_view base);

  /// Nothing when these hosts may be used; otherwise why not. The suffixes
  /// must be "." and a host name, the fixed host a host name or IPv6 address.
  std::optional<QXError> validate() const;

  /// Member-wise equality.
  friend bool operator==(const QXServiceHosts&, const QXServiceHosts&) = default;
};

/// Whether `host` names this machine (`localhost`, `*.localhost`, `127.0.0.1`, `::1`).
bool isLoopbackHost(std::string_view host);

}  // namespace quorvix
