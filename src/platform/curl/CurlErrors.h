#pragma once
/// @file
/// How transport failures are reported: libcurl results translated into the
/// platform URL-loading error codes of the "NSURLErrorDomain" domain.

#include <curl/curl.h>

#include <string>

#include "quorvix/core/QXError.h"

namespace quorvix::detail {

/// URL-loading codes the transport reports beyond the ones in `errors`.
inline constexpr long kCancelled = -999;
inline constexpr long kTooManyRedirects = -1007;
inline constexpr long kSecureConnectionFailed = -1200;

/// The URL-loading error code for a failed transfer. `osErrno` is the
/// transfer's `CURLINFO_OS_ERRNO` and tells "connection refused" (-1004)
/// apart from "no route to the network" (-1009). Never called with `CURLE_OK`.
long urlErrorCode(CURLcode code, long osErrno);

/// A "NSURLErrorDomain" error carrying `description` as "NSLocalizedDescription"
/// and the request's URL as "NSErrorFailingURLStringKey".
QXError urlError(long code, std::string description, std::string failingURL);

}  // namespace quorvix::detail
