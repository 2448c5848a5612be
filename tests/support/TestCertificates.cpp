#include "support/TestCertificates.h"

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <cstdio>

namespace quorvix::testing {

Identity Identity::make(const std::string& commonName, const std::string& altNames, const Identity* issuer,
                        bool authority) {
  Identity made{Key(EVP_EC_gen("P-256")), Certificate(X509_new())};
  if (!made) return {};
  X509* cert = made.certificate.get();
  static long serial = 1;
  X509_set_version(cert, 2);
  ASN1_INTEGER_set(X509_get_serialNumber(cert), ++serial);
  X509_gmtime_adj(X509_getm_notBefore(cert), -3600);
  X509_gmtime_adj(X509_getm_notAfter(cert), 24 * 3600);
  X509_set_pubkey(cert, made.key.get());
  X509_NAME_add_entry_by_txt(X509_get_subject_name(cert), "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>(commonName.c_str()), -1, -1, 0);
  X509* signer = issuer ? issuer->certificate.get() : cert;
  X509_set_issuer_name(cert, X509_get_subject_name(signer));
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, signer, cert, nullptr, nullptr, 0);
  bool complete = true;
  const auto add = [&](int nid, const std::string& value) {
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str());
    complete = complete && extension != nullptr && X509_add_ext(cert, extension, -1) == 1;
    X509_EXTENSION_free(extension);
  };
  if (authority) {
    add(NID_basic_constraints, "critical,CA:TRUE");
    add(NID_key_usage, "critical,keyCertSign,cRLSign");
  } else {
    add(NID_basic_constraints, "CA:FALSE");
    add(NID_subject_alt_name, altNames);
  }
  if (!complete || X509_sign(cert, issuer ? issuer->key.get() : made.key.get(), EVP_sha256()) <= 0) return {};
  return made;
}

bool Identity::writeCertificate(const std::string& path) const {
  std::FILE* file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return false;
  const bool written = PEM_write_X509(file, certificate.get()) == 1;
  return std::fclose(file) == 0 && written;
}

bool Identity::writeKey(const std::string& path) const {
  std::FILE* file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return false;
  const bool written = PEM_write_PrivateKey(file, key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1;
  return std::fclose(file) == 0 && written;
}

}  // namespace quorvix::testing
