#include "quorvix/core/QXError.h"

namespace quorvix::errors {

QXError notValidResponse() { return QXError{kEngineDomain, kNotValidResponse, {{"Description", "Not valid response"}}}; }

QXError service(long code) { return QXError{kServiceDomain, code, {}}; }

QXError engine(long code, std::string description) {
  return QXError{kEngineDomain, code, {{"Description", std::move(description)}}};
}

QXError noAccount() {
  return engine(kNoAccount, "No account to talk to: call prepareWithAccountParams with an account first");
}

QXError badAccountName(std::string_view what, std::string_view value) {
  return engine(kBadAccountName, "The " + std::string(what) + " '" + std::string(value) +
                                     "' is not a host name (letters, digits and '-' only" +
                                     (what == "server" ? std::string(", labels joined by dots") : std::string()) +
                                     "): nothing was sent");
}

QXError noArticle() { return engine(kNoArticle, "No article to ask channels for"); }

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
