#pragma once
/// @file
/// The customer account the engine talks to, and the address every request starts from.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/engine/Json.h"
#include "quorvix/engine/URLComponents.h"

namespace quorvix {

/// One dynamic search context, made from text of the form "name:value".
class DynamicContext {
 public:
  DynamicContext() = default;
  /// Reads "name:value". Only text of at least 4 characters holding ":" is
  /// split (at every ":"; the first piece is the name, the last the value: "a:b:c"
  /// gives a and c); anything else leaves both empty. Always gives an object.
  static std::shared_ptr<DynamicContext> initWithContext(const std::string& text);

  /// The context's name.
  const std::string& name() const { return name_; }
  /// Replaces `name()`.
  void setName(std::string name) { name_ = std::move(name); }
  /// The context's value.
  const std::string& context() const { return context_; }
  /// Replaces `context()`.
  void setContext(std::string context) { context_ = std::move(context); }

 private:
  std::string name_;
  std::string context_;
};

/// Describes the customer account: name, knowledge base, API key, optional
/// server, label and search contexts. Every field starts empty; hand it to
/// `Quorvix::prepareWithAccountParams`. Not safe for concurrent mutation:
/// build it, then hand it over.
class AccountParams {
 public:
  AccountParams() = default;

  /// The account name: a host label.
  const std::optional<std::string>& account() const { return account_; }
  /// Replaces `account()`.
  void setAccount(std::optional<std::string> v) { account_ = std::move(v); }
  /// The knowledge base.
  const std::optional<std::string>& knowledgeBase() const { return knowledgeBase_; }
  /// Replaces `knowledgeBase()`.
  void setKnowledgeBase(std::optional<std::string> v) { knowledgeBase_ = std::move(v); }
  /// The API key.
  const std::optional<std::string>& apiKey() const { return apiKey_; }
  /// Replaces `apiKey()`.
  void setApiKey(std::optional<std::string> v) { apiKey_ = std::move(v); }
  /// Optional server name; when non-empty requests go to `server + mainSuffix`
  /// with the path prefix "/~account".
  const std::optional<std::string>& server() const { return server_; }
  /// Replaces `server()`.
  void setServer(std::optional<std::string> v) { server_ = std::move(v); }
  /// The label the FAQ is filtered by.
  const std::optional<std::string>& labelId() const { return labelId_; }
  /// Replaces `labelId()`.
  void setLabelId(std::optional<std::string> v) { labelId_ = std::move(v); }
  /// Whether every context is mandatory.
  bool allContextsMandatory() const { return allContextsMandatory_; }
  /// Replaces `allContextsMandatory()`.
  void setAllContextsMandatory(bool v) { allContextsMandatory_ = v; }

  /// The effective context: with dynamic contexts, their entries in order (a
  /// later name overwrites an earlier one) and then every static entry on top;
  /// without, the static dictionary as set (possibly absent).
  std::optional<JsonObject> quorvixContext() const;
  /// Sets the static context dictionary (string values).
  void setQuorvixContext(std::optional<JsonObject> v) { quorvixContext_ = std::move(v); }

  /// "mobile" while no referrer is set.
  std::string referrer() const { return referrer_.value_or("mobile"); }
  /// Replaces `referrer()`.
  void setReferrer(std::optional<std::string> v) { referrer_ = std::move(v); }

  /// The dynamic contexts, in the order they were appended.
  std::vector<std::shared_ptr<DynamicContext>>& dynamicContexts() { return dynamicContexts_; }
  /// The dynamic contexts, in the order they were added.
  const std::vector<std::shared_ptr<DynamicContext>>& dynamicContexts() const { return dynamicContexts_; }
  /// Replaces `dynamicContexts()`.
  void setDynamicContexts(std::vector<std::shared_ptr<DynamicContext>> v) { dynamicContexts_ = std::move(v); }
  /// Appends one dynamic context (duplicates allowed, order kept).
  void appendDynamicContext(std::shared_ptr<DynamicContext> context);
  /// Empties the dynamic contexts.
  void resetDynamicContext();
  /// The values of the dynamic contexts joined by "-", or nothing when there are none.
  std::optional<std::string> dynamicContextDescription() const;

  /// A fresh copy of the account's base address: scheme and host of the
  /// service hosts, path "" (or "/~account" with a server), and one query item
  /// "Referer" = `appParams("app")`. Nothing without an account.
  std::optional<URLComponents> baseUrlComp() const;
  /// Stores a value that `baseUrlComp()` never reads (kept for hosts that set it).
  void setBaseUrlComp(std::optional<URLComponents> v) { storedBaseUrlComp_ = std::move(v); }

  /// `md5` of account followed by knowledge base.
  std::string accountId() const;

 private:
  std::optional<std::string> account_;
  std::optional<std::string> knowledgeBase_;
  std::optional<std::string> apiKey_;
  std::optional<std::string> server_;
  std::optional<std::string> labelId_;
  bool allContextsMandatory_ = false;
  std::optional<JsonObject> quorvixContext_;
  std::optional<std::string> referrer_;
  std::vector<std::shared_ptr<DynamicContext>> dynamicContexts_;
  std::optional<URLComponents> storedBaseUrlComp_;
};

}  // namespace quorvix
