#include "BenchCertificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace quorvix::bench {

std::optional<TlsFiles> makeCertificate() {
  EVP_PKEY* key = EVP_EC_gen("P-256");
  X509* cert = X509_new();
  if (key == nullptr || cert == nullptr) return std::nullopt;
  X509_set_version(cert, 2);
  ASN1_INTEGER_set(X509_get_serialNumber(cert), 1);
  X509_gmtime_adj(X509_getm_notBefore(cert), -3600);
  X509_gmtime_adj(X509_getm_notAfter(cert), 24 * 3600);
  X509_set_pubkey(cert, key);
  X509_NAME* name = X509_get_subject_name(cert);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"), -1, -1, 0);
  X509_set_issuer_name(cert, name);
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, cert, cert, nullptr, nullptr, 0);
  X509_EXTENSION* altNames =
      X509V3_EXT_conf_nid(nullptr, &context, NID_subject_alt_name, "DNS:localhost,DNS:acme.localhost");
  X509_add_ext(cert, altNames, -1);
  X509_EXTENSION_free(altNames);
  X509_sign(cert, key, EVP_sha256());

  const auto folder = std::filesystem::temp_directory_path();
  TlsFiles files{(folder / ("quorvix-bench-cert-" + std::to_string(::getpid()) + ".pem")).string(),
                 (folder / ("quorvix-bench-key-" + std::to_string(::getpid()) + ".pem")).string()};
  std::FILE* certFile = std::fopen(files.certificatePath.c_str(), "w");
  std::FILE* keyFile = std::fopen(files.keyPath.c_str(), "w");
  const bool written = certFile != nullptr && keyFile != nullptr && PEM_write_X509(certFile, cert) == 1 &&
                       PEM_write_PrivateKey(keyFile, key, nullptr, nullptr, 0, nullptr, nullptr) == 1;
  if (certFile != nullptr) std::fclose(certFile);
  if (keyFile != nullptr) std::fclose(keyFile);
  X509_free(cert);
  EVP_PKEY_free(key);
  if (!written) return std::nullopt;
  return files;
}

}  // namespace quorvix::bench
