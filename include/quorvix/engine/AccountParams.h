#pragma once
/// @file
/// The customer account the engine talks to, and the address every request starts from.

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/core/Json.h"
#include "quorvix/core/QXError.h"
#include "quorvix/core/URLComponents.h"

namespace quorvix {

/// One dynamic search context, made from text of the form "name:value".
/// Safe to read and change from any thread.
class DynamicContext {
 public:
  DynamicContext() = default;
  /// Reads "name:value". Only text of at least 4 characters holding ":" is
  /// split (at every ":"; the first piece is the name, the last the value: "a:b:c"
  /// gives a and c); anything else leaves both empty. Always gives an object.
  static std::shared_ptr<DynamicContext> initWithContext(const std::string& text);

  /// The context's name ("brand" in "brand:acme").
  std::string name() const;
  /// Replaces the name.
  void setName(std::string name);
  /// The context's value ("acme" in "brand:acme").
  std::string context() const;
  /// Replaces the value.
  void setContext(std::string context);

 private:
  mutable std::mutex mutex_;
  std::string name_;
  std::string context_;
};

/// Describes the customer account: name, knowledge base, API key, optional
/// server, label and search contexts. Every field starts empty; hand it to
/// `Quorvix::prepareWithAccountParams`. Safe to use from any thread: the host
/// may keep changing it (the engine adds dynamic contexts to it) while the
/// engine reads it on its own threads; every read is a copy.
///
/// The account and the server become parts of host names, so they must be host
/// labels: letters, digits and "-" (a server may join such labels with dots).
/// With anything else no address is built and nothing is sent (`addressError`
/// says why).
class AccountParams {
 public:
  AccountParams() = default;
  /// A copy of every field, read under `other`'s lock (the dynamic contexts are shared).
  AccountParams(const AccountParams& other);
  AccountParams& operator=(const AccountParams&) = delete;

  /// The account's name; its host is `account + secondSuffix`.
  std::optional<std::string> account() const;
  /// Sets the account's name.
  void setAccount(std::optional<std::string> v);
  /// The knowledge base ("kb"), when the account has several.
  std::optional<std::string> knowledgeBase() const;
  /// Sets the knowledge base.
  void setKnowledgeBase(std::optional<std::string> v);
  /// The API key sent where the service asks for one.
  std::optional<std::string> apiKey() const;
  /// Sets the API key.
  void setApiKey(std::optional<std::string> v);
  /// Optional server name; when non-empty requests go to `server + mainSuffix`
  /// with the path prefix "/~account".
  std::optional<std::string> server() const;
  /// Sets the server name (empty or absent: the account's own host).
  void setServer(std::optional<std::string> v);
  /// The label whose FAQ group the configuration reads.
  std::optional<std::string> labelId() const;
  /// Sets the label.
  void setLabelId(std::optional<std::string> v);
  /// Whether every context must be chosen before searching.
  bool allContextsMandatory() const;
  /// Sets whether every context is mandatory.
  void setAllContextsMandatory(bool v);

  /// The effective context: with dynamic contexts, their entries in order (a
  /// later name overwrites an earlier one) and then every static entry on top;
  /// without, the static dictionary as set (possibly absent).
  std::optional<JsonObject> quorvixContext() const;
  /// Sets the static context dictionary (string values).
  void setQuorvixContext(std::optional<JsonObject> v);

  /// "mobile" while no referrer is set.
  std::string referrer() const;
  /// Sets the referrer.
  void setReferrer(std::optional<std::string> v);

  /// The dynamic contexts, in the order they were appended (a copy of the list).
  std::vector<std::shared_ptr<DynamicContext>> dynamicContexts() const;
  /// Replaces the dynamic contexts.
  void setDynamicContexts(std::vector<std::shared_ptr<DynamicContext>> v);
  /// Appends one dynamic context (duplicates allowed, order kept).
  void appendDynamicContext(std::shared_ptr<DynamicContext> context);
  /// Empties the dynamic contexts.
  void resetDynamicContext();
  /// The values of the dynamic contexts joined by "-", or nothing when there are none.
  std::optional<std::string> dynamicContextDescription() const;

  /// A fresh copy of the account's base address: scheme and host of the
  /// service hosts, path "" (or "/~account" with a server), and one query item
  /// "Referer" = `appParams("app")`. Nothing without an account, or when the
  /// account or server is not a host name (see `addressError`).
  std::optional<URLComponents> baseUrlComp() const;
  /// Why `baseUrlComp()` gives nothing: no account (`errors::kNoAccount`) or an
  /// account or server that is not a host name (`errors::kBadAccountName`);
  /// nothing when an address can be built.
  std::optional<QXError> addressError() const;
  /// Stores a value that `baseUrlComp()` never reads (kept for hosts that set it).
  void setBaseUrlComp(std::optional<URLComponents> v);

  /// `md5` of account followed by knowledge base.
  std::string accountId() const;

 private:
  mutable std::mutex mutex_;
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
