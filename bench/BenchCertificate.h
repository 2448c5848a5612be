#pragma once
// A throwaway self-signed certificate for the TLS benchmarks.

#include <optional>

#include "FixedReplyServer.h"

namespace quorvix::bench {

/// Makes a P-256 certificate for "localhost" and "acme.localhost" and writes
/// it and its key as PEM files (the certificate file doubles as the CA bundle).
std::optional<TlsFiles> makeCertificate();

}  // namespace quorvix::bench
