/// @file
/// Translation of libcurl results into URL-loading error codes.

#include "platform/curl/CurlErrors.h"

#include <cerrno>
#include <utility>

namespace quorvix::detail {

namespace {

/// Whether a failed connect means this machine has no usable network at all
/// rather than a host that refused us.
bool isNetworkUnreachable(long osErrno) {
  return osErrno == ENETUNREACH || osErrno == ENETDOWN || osErrno == EHOSTUNREACH;
}

}  // namespace

long urlErrorCode(CURLcode code, long osErrno) {
  switch (code) {
    case CURLE_UNSUPPORTED_PROTOCOL:
      return errors::kUnsupportedURL;
    case CURLE_URL_MALFORMAT:
      return errors::kBadURL;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return errors::kCannotFindHost;
    case CURLE_COULDNT_CONNECT:
      return isNetworkUnreachable(osErrno) ? errors::kNotConnectedToInternet : errors::kCannotConnectToHost;
    case CURLE_OPERATION_TIMEDOUT:
      return errors::kTimedOut;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return errors::kNetworkConnectionLost;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_CRL_BADFILE:
      return errors::kServerCertificateUntrusted;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_USE_SSL_FAILED:
      return kSecureConnectionFailed;
    case CURLE_FILESIZE_EXCEEDED:
      return errors::kDataLengthExceedsMaximum;
    case CURLE_TOO_MANY_REDIRECTS:
      return kTooManyRedirects;
    case CURLE_ABORTED_BY_CALLBACK:
      return kCancelled;
    default:
      return errors::kUnknown;
  }
}

QXError urlError(long code, std::string description, std::string failingURL) {
  return QXError{errors::kURLDomain,
                 code,
                 {{"NSLocalizedDescription", std::move(description)},
                  {"NSErrorFailingURLStringKey", std::move(failingURL)}}};
}

}  // namespace quorvix::detail
