#pragma once
/// @file
/// The error value every completion of the engine reports.

#include <map>
#include <string>

namespace quorvix {

/// An error reported by the engine or the service. Nothing in the public API
/// throws; failures arrive as `std::optional<QXError>` next to the result.
///
/// Domains in use:
/// - "com.quorvix": the service refused (code = HTTP status or the body's "status").
/// - "com.quorvix.engine": the engine could not use a reply (code 404,
///   userInfo "Description" = "Not valid response").
/// - "NSURLErrorDomain": transport failures, with the platform URL-loading codes
///   (-1009 not connected, -1005 connection lost, -1003 cannot find host,
///   -1002 unsupported URL, -1000 bad URL, -1001 timed out, -1004 cannot connect,
///   -1103 reply too large, -1202 bad server certificate, -1 unknown).
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

/// The engine's "reply I cannot use" error: domain "com.quorvix.engine",
/// code 404, "Description" = "Not valid response".
QXError notValidResponse();
/// A service error of domain "com.quorvix" with the given code and no user information.
QXError service(long code);
/// The engine has no account to address (domain "com.quorvix.engine", code -1000):
/// `prepareWithAccountParams` was not called with an account.
QXError noAccount();
}  // namespace errors

}  // namespace quorvix
