#include "BenchCertificate.h"

#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/TestCertificates.h"

namespace quorvix::bench {

std::optional<TlsFiles> makeCertificate() {
  const auto identity = testing::Identity::make("localhost", "DNS:localhost,DNS:acme.localhost", nullptr, false);
  if (!identity) return std::nullopt;
  const auto folder = std::filesystem::temp_directory_path();
  TlsFiles files{(folder / ("quorvix-bench-cert-" + std::to_string(::getpid()) + ".pem")).string(),
                 (folder / ("quorvix-bench-key-" + std::to_string(::getpid()) + ".pem")).string()};
  if (!identity.writeCertificate(files.certificatePath) || !identity.writeKey(files.keyPath)) return std::nullopt;
  return files;
}

}  // namespace quorvix::bench
