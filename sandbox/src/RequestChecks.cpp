#include "RequestChecks.h"

#include <charconv>
#include <string>

namespace quorvix::sandbox {

std::optional<int64_t> parseInteger(std::string_view text) {
  int64_t value = 0;
  const char* end = text.data() + text.size();
  auto [stop, error] = std::from_chars(text.data(), end, value);
  if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
  return value;
}

const KnowledgeBase* requestKnowledgeBase(const EndpointRequest& request) {
  if (request.session) return KnowledgeBases::builtIn().find(request.account.name, request.session->knowledgeBase);
  const std::string kb = request.queryValueOr("kb", "");
  if (!kb.empty() && !request.account.hasKnowledgeBase(kb)) return nullptr;
  return KnowledgeBases::builtIn().find(request.account.name, kb.empty() ? request.account.defaultKnowledgeBase() : kb);
}

bool accountItemMatches(const EndpointRequest& request, bool required) {
  const std::optional<std::string> account = request.queryValue("account");
  return account ? *account == request.account.name : !required;
}

}  // namespace quorvix::sandbox
