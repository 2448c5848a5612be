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
  std::string domain;
  long code = 0;
  std::map<std::string, std::string> userInfo;

  friend bool operator==(const QXError&, const QXError&) = default;
};

/// How an error prints in a log line:
/// `Error Domain=D Code=C "description" UserInfo={key=value, ...}`.
std::string describe(const QXError& error);

/// Error domains and codes used across the engine.
namespace errors {
inline constexpr const char* kServiceDomain = "com.quorvix";
inline constexpr const char* kEngineDomain = "com.quorvix.engine";
inline constexpr const char* kURLDomain = "NSURLErrorDomain";
inline constexpr const char* kJSONDomain = "NSCocoaErrorDomain";

inline constexpr long kUnknown = -1;
inline constexpr long kBadURL = -1000;
inline constexpr long kTimedOut = -1001;
inline constexpr long kUnsupportedURL = -1002;
inline constexpr long kCannotFindHost = -1003;
inline constexpr long kCannotConnectToHost = -1004;
inline constexpr long kNetworkConnectionLost = -1005;
inline constexpr long kNotConnectedToInternet = -1009;
inline constexpr long kDataLengthExceedsMaximum = -1103;
inline constexpr long kServerCertificateUntrusted = -1202;
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
