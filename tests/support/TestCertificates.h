#pragma once
// Keys and certificates made up on the spot for TLS tests and benchmarks.

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>

namespace quorvix::testing {

struct KeyFree {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct CertificateFree {
  void operator()(X509* certificate) const { X509_free(certificate); }
};
using Key = std::unique_ptr<EVP_PKEY, KeyFree>;
using Certificate = std::unique_ptr<X509, CertificateFree>;

/// A P-256 key and a certificate for it, valid from an hour ago for a day.
struct Identity {
  Key key;
  Certificate certificate;

  /// A certificate for `commonName` with the subject names `altNames`
  /// ("DNS:localhost,DNS:acme.localhost"), signed by `issuer` (itself when
  /// null). An `authority` may sign others and has no subject names. Both
  /// members are null when OpenSSL could not make them.
  static Identity make(const std::string& commonName, const std::string& altNames, const Identity* issuer,
                       bool authority);

  /// Whether the key and the certificate exist.
  explicit operator bool() const { return key && certificate; }
  /// Writes the certificate as PEM (usable as a CA bundle); false when it cannot.
  bool writeCertificate(const std::string& path) const;
  /// Writes the private key as PEM; false when it cannot.
  bool writeKey(const std::string& path) const;
};

}  // namespace quorvix::testing
