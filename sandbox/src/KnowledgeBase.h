#pragma once
/// @file
/// The sandbox's knowledge bases: help-centre articles, FAQ groups, labels and
/// context names of each account, read from the data files "kb-*.json".
///
/// API (for every endpoint group):
/// - `KnowledgeBases::builtIn()` — every knowledge base compiled into the
///   service (loaded once, immutable, safe to share between threads).
/// - `KnowledgeBases::find(account, kb)` — the knowledge base of an account; an
///   empty `kb` names the account's first one. nullptr when there is none.
/// - `KnowledgeBase::article(id)` — one article by its identifier, or nullptr.
/// - `KnowledgeBase::articles()` — every article in file order. An article has
///   `id`, `title`, `body` (possibly carrying a "<quorvixextradata>{...}</quorvixextradata>"
///   block), `hash` (of title and body), `likes`, `keywordsetId`, `keywords`
///   (extra words a ranking may use) and `contexts` (context name -> value,
///   e.g. "product" -> "Router X1").
/// - `KnowledgeBase::inContext(article, filter)` — whether an article matches
///   every entry of a context filter (an entry whose name the article lacks
///   does not match).
/// - `faqGroups()`, `labels()`, `label(id)`, `contexts()` — as in the data file.
/// - `parseContextFilter("k1:v1,k2:v2")` — the engine's "context" wire form as pairs;
///   `decodeBase64(text)` — for the requests that send that form in base64.

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvix::sandbox {

/// One help-centre article.
struct Article {
  std::string id;
  std::string title;
  std::string body;
  std::string hash;
  std::string likes;
  std::string keywordsetId;
  std::vector<std::string> keywords;
  std::map<std::string, std::string> contexts;
};

/// A titled list of articles shown before the user searches. A group with a
/// context is shown only under that context; one without is the general list.
struct FaqGroup {
  std::string title;
  int behavior = 0;
  std::map<std::string, std::string> context;
  std::vector<std::string> articleIds;
};

/// A named, optionally iconed entry that opens its own list of articles.
struct Label {
  /// Decimal identifier ("27"); the engine sends it in upper-case hexadecimal ("1B").
  std::string id;
  std::string labelName;
  /// Absent when the label has no icon.
  std::optional<std::string> icon;
  std::string context;
  std::vector<std::string> articleIds;
};

/// One context value and its identifier.
struct ContextValue {
  std::string id;
  std::string value;
};

/// A context name (e.g. "product") with its identifier and values.
struct ContextName {
  std::string name;
  std::string id;
  std::vector<ContextValue> values;
};

/// Context filter pairs in the order sent.
using ContextFilter = std::vector<std::pair<std::string, std::string>>;

/// "k1:v1,k2:v2" into pairs; an entry without ":" has an empty value.
ContextFilter parseContextFilter(std::string_view text);

/// Standard base64 (padding optional) to bytes; nothing when the text is not base64.
std::optional<std::string> decodeBase64(std::string_view text);

/// One account's knowledge base.
class KnowledgeBase {
 public:
  /// Parses one "kb-*.json" document; throws std::runtime_error when it is malformed.
  static KnowledgeBase fromJson(std::string_view json);

  const std::string& account() const { return account_; }
  const std::string& knowledgeBase() const { return knowledgeBase_; }
  /// The service's identifier of the knowledge base (cnf.json "kbId").
  const std::string& kbId() const { return kbId_; }
  const std::string& languageCode() const { return languageCode_; }

  const std::vector<Article>& articles() const { return articles_; }
  const Article* article(std::string_view id) const;
  const std::vector<FaqGroup>& faqGroups() const { return faqGroups_; }
  const std::vector<Label>& labels() const { return labels_; }
  /// The label with that decimal identifier, or nullptr.
  const Label* label(std::string_view id) const;
  const std::vector<ContextName>& contexts() const { return contexts_; }

  /// Whether the article carries every (name, value) of the filter.
  static bool inContext(const Article& article, const ContextFilter& filter);

 private:
  std::string account_;
  std::string knowledgeBase_;
  std::string kbId_;
  std::string languageCode_;
  std::vector<Article> articles_;
  std::vector<FaqGroup> faqGroups_;
  std::vector<Label> labels_;
  std::vector<ContextName> contexts_;
};

/// Every knowledge base of the service.
class KnowledgeBases {
 public:
  /// The knowledge bases compiled into the service, loaded once.
  static const KnowledgeBases& builtIn();
  /// Adds one (used by `builtIn` and by tests).
  void add(KnowledgeBase knowledgeBase) { bases_.push_back(std::move(knowledgeBase)); }
  /// The knowledge base `kb` of `account` (the account's first when `kb` is empty), or nullptr.
  const KnowledgeBase* find(std::string_view account, std::string_view kb) const;

 private:
  std::vector<KnowledgeBase> bases_;
};

}  // namespace quorvix::sandbox
