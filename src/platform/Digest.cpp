#include "platform/Digest.h"

#include <openssl/evp.h>

#include "core/Encoding.h"

namespace quorvix::detail {

std::string md5Hex(std::string_view bytes) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_md5(), nullptr) != 1) return {};
  return hexEncode(std::string_view(reinterpret_cast<const char*>(digest), length), HexCase::lower);
}

std::string base64(std::string_view bytes) {
  std::string out(4 * ((bytes.size() + 2) / 3), '\0');
  if (bytes.empty()) return out;
  const int written = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(out.data()),
                                      reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  out.resize(written > 0 ? static_cast<std::size_t>(written) : 0);
  return out;
}

}  // namespace quorvix::detail
