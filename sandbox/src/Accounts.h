#pragma once
/// @file
/// The accounts the service knows, read from data/accounts.json.

#include <string>
#include <string_view>
#include <vector>

namespace quorvix::sandbox {

/// One customer account: the first label of its host name or its "/~name" prefix.
struct Account {
  std::string name;
  std::string displayName;
  std::string apiKey;
  /// The account's knowledge bases; the first one is used when a request names none.
  std::vector<std::string> knowledgeBases;

  /// Whether `knowledgeBase` is one of the account's.
  bool hasKnowledgeBase(std::string_view knowledgeBase) const;
  /// The knowledge base used when a request names none.
  const std::string& defaultKnowledgeBase() const;
};

/// The set of accounts; immutable once loaded, so safe to share between threads.
class Accounts {
 public:
  /// Parses a document shaped like data/accounts.json; throws std::runtime_error
  /// when it is malformed or lists no account.
  static Accounts fromJson(std::string_view json);
  /// The accounts compiled into the service.
  static Accounts builtIn();

  /// The account of that name, or nullptr.
  const Account* find(std::string_view name) const;
  /// Every account, in the order of the data file.
  const std::vector<Account>& all() const { return accounts_; }

 private:
  std::vector<Account> accounts_;
};

}  // namespace quorvix::sandbox
