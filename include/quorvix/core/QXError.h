#pragma once
/// @file
/// The error value every completion of the engine reports.

#include <map>
#include <string>
#include <string_view>

namespace quorvix {

/// An error reported by the engine or the service. Nothing in the public API
/// throws; failures arrive as `std::optional<QXError>` next to the result.
///
/// Domains and codes in use (the constants below name each one):
/// - "com.quorvix": the service refused (code = HTTP status or the body's "status").
/// - "com.quorvix.engine": the engine itself refused or could not go on. Every
///   code means one thing, and userInfo "Description" says why in words:
///   - 404 `kNotValidResponse`: a reply the engine cannot use ("Not valid response").
///   - 1001 `kNoAccount`: no account to address (`prepareWithAccountParams`
///     was not called with an account).
///   - 1002 `kBadAccountName`: the account or the server is not a host name
///     (letters, digits and "-"; a server may join such labels with dots), so
///     nothing was sent.
///   - 1003 `kNoArticle`: channels were asked for without an article.
///   - 1010 `kUnsupportedServiceScheme`: service hosts with a scheme other than
///     https, or plain http to a host that is not this machine.
///   - 1011 `kBadServiceHosts`: service hosts or a service base that cannot be
///     used (empty or malformed host, suffix or port).
/// - "NSURLErrorDomain": transport failures, with the platform URL-loading codes
///   (-1009 not connected, -1005 connection lost, -1003 cannot find host,
///   -1002 unsupported URL, -1000 bad URL, -1001 timed out, -1004 cannot connect,
///   -1103 reply too large, -1202 bad server certificate, -999 cancelled, -1 unknown).
/// - "NSCocoaErrorDomain" code 3840: a body that is not valid JSON.
struct QXError {
  /// The error domain (see above).
  std::string domain;
  /// The code within the domain.
  long code = 0;
  /// What the error says, by key ("Description", "url", ...).
  std::map<std::string, std::string> userInfo;

  /// Member-wise equality.
  friend bool operator==(const QXError&, const QXError&) = default;
};

/// How an error prints in a log line:
/// `Error Domain=D Code=C "description" UserInfo={key=value, ...}`.
std::string describe(const QXError& error);

/// Error domains and codes used across the engine.
namespace errors {
/// The service refused.
inline constexpr const char* kServiceDomain = "com.quorvix";
/// The engine could not use a reply.
inline constexpr const char* kEngineDomain = "com.quorvix.engine";
/// Transport failures.
inline constexpr const char* kURLDomain = "NSURLErrorDomain";
/// Bodies that are not valid JSON.
inline constexpr const char* kJSONDomain = "NSCocoaErrorDomain";

/// An unknown transport failure.
inline constexpr long kUnknown = -1;
/// An address that cannot be built.
inline constexpr long kBadURL = -1000;
/// No answer in time.
inline constexpr long kTimedOut = -1001;
/// An address the transport does not serve.
inline constexpr long kUnsupportedURL = -1002;
/// The host name does not resolve.
inline constexpr long kCannotFindHost = -1003;
/// The host refused the connection.
inline constexpr long kCannotConnectToHost = -1004;
/// The connection dropped.
inline constexpr long kNetworkConnectionLost = -1005;
/// No network.
inline constexpr long kNotConnectedToInternet = -1009;
/// A reply larger than the engine accepts.
inline constexpr long kDataLengthExceedsMaximum = -1103;
/// A certificate the engine does not trust.
inline constexpr long kServerCertificateUntrusted = -1202;
/// A body that is not valid JSON.
inline constexpr long kJSONParseError = 3840;

// Codes of the "com.quorvix.engine" domain (see `QXError`).
/// A reply the engine cannot use ("Not valid response").
inline constexpr long kNotValidResponse = 404;
/// No account to address: the engine was not prepared with an account.
inline constexpr long kNoAccount = 1001;
/// An account or server name that is not a host label; nothing was sent.
inline constexpr long kBadAccountName = 1002;
/// Channels were asked for without an article.
inline constexpr long kNoArticle = 1003;
/// Service hosts with a scheme other than https (http only for loopback hosts).
inline constexpr long kUnsupportedServiceScheme = 1010;
/// Service hosts that are not host names.
inline constexpr long kBadServiceHosts = 1011;

/// The engine's "reply I cannot use" error: domain "com.quorvix.engine",
/// code 404, "Description" = "Not valid response".
QXError notValidResponse();
/// A service error of domain "com.quorvix" with the given code and no user information.
QXError service(long code);
/// The engine has no account to address (`kNoAccount`):
/// `prepareWithAccountParams` was not called with an account.
QXError noAccount();
/// The account or server name cannot be part of a host name (`kBadAccountName`);
/// `what` names the field ("account" or "server") and `value` is what it held.
QXError badAccountName(std::string_view what, std::string_view value);
/// Channels were asked for without an article (`kNoArticle`).
QXError noArticle();
/// An engine error (domain "com.quorvix.engine") with `code` and "Description".
QXError engine(long code, std::string description);
}  // namespace errors

}  // namespace quorvix
