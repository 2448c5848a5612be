#include "quorvix/engine/QXError.h"

namespace quorvix::errors {

QXError notValidResponse() { return QXError{kEngineDomain, 404, {{"Description", "Not valid response"}}}; }

QXError service(long code) { return QXError{kServiceDomain, code, {}}; }

QXError noAccount() {
  return QXError{kEngineDomain, kBadURL,
                 {{"Description", "No account to talk to: call prepareWithAccountParams with an account first"}}};
}

}  // namespace quorvix::errors

namespace quorvix {

std::string describe(const QXError& error) {
  std::string out = "Error Domain=" + error.domain + " Code=" + std::to_string(error.code);
  for (const char* key : {"NSLocalizedDescription", "Description", "NSDebugDescription"}) {
    if (auto it = error.userInfo.find(key); it != error.userInfo.end()) {
      out += " \"" + it->second + "\"";
      break;
    }
  }
  out += error.userInfo.empty() ? " (null)" : " UserInfo={";
  bool first = true;
  for (const auto& [key, value] : error.userInfo) {
    out += (first ? "" : ", ") + key + "=" + value;
    first = false;
  }
  if (!error.userInfo.empty()) out += "}";
  return out;
}

}  // namespace quorvix
