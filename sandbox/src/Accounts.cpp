#include "Accounts.h"

#include <algorithm>
#include <boost/json.hpp>
#include <stdexcept>

#include "EmbeddedData.h"

namespace quorvix::sandbox {

namespace json = boost::json;

bool Account::hasKnowledgeBase(std::string_view knowledgeBase) const {
  return std::find(knowledgeBases.begin(), knowledgeBases.end(), knowledgeBase) != knowledgeBases.end();
}

const std::string& Account::defaultKnowledgeBase() const { return knowledgeBases.front(); }

namespace {

std::string stringField(const json::object& object, std::string_view key, bool required) {
  const json::value* value = object.if_contains(key);
  if (value == nullptr && !required) {
    return {};
  }
  if (value == nullptr || !value->is_string()) {
    throw std::runtime_error("field \"" + std::string(key) + "\" must be a string");
  }
  return std::string(value->get_string());
}

Account parseAccount(const json::value& value) {
  const json::object& object = value.as_object();
  Account account;
  account.name = stringField(object, "name", true);
  account.displayName = stringField(object, "displayName", false);
  account.apiKey = stringField(object, "apiKey", true);
  for (const json::value& kb : object.at("knowledgeBases").as_array()) {
    account.knowledgeBases.emplace_back(kb.as_string());
  }
  if (account.name.empty() || account.knowledgeBases.empty()) {
    throw std::runtime_error("every account needs a name and a knowledge base");
  }
  return account;
}

}  // namespace

Accounts Accounts::fromJson(std::string_view text) {
  Accounts result;
  try {
    const json::value document = json::parse(text);
    for (const json::value& entry : document.at("accounts").as_array()) {
      result.accounts_.push_back(parseAccount(entry));
    }
    if (result.accounts_.empty()) {
      throw std::runtime_error("no account listed");
    }
  } catch (const std::exception& error) {
    throw std::runtime_error(std::string("accounts: ") + error.what());
  }
  return result;
}

Accounts Accounts::builtIn() {
  const std::optional<std::string_view> text = embeddedFile("accounts.json");
  if (!text) {
    throw std::runtime_error("accounts: accounts.json was not embedded");
  }
  return fromJson(*text);
}

const Account* Accounts::find(std::string_view name) const {
  auto it = std::find_if(accounts_.begin(), accounts_.end(), [&](const Account& a) { return a.name == name; });
  return it == accounts_.end() ? nullptr : &*it;
}

}  // namespace quorvix::sandbox
