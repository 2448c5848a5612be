#include "KnowledgeBase.h"

#include <algorithm>
#include <boost/json.hpp>
#include <cstdint>
#include <stdexcept>

#include "EmbeddedData.h"

namespace quorvix::sandbox {

namespace json = boost::json;

namespace {

// The knowledge-base files compiled into the service.
constexpr std::string_view kKnowledgeBaseFiles[] = {"kb-acme.json"};

std::string text(const json::object& object, std::string_view key) {
  const json::value* value = object.if_contains(key);
  if (value == nullptr || value->is_null()) return {};
  if (!value->is_string()) throw std::runtime_error("field \"" + std::string(key) + "\" must be a string");
  return std::string(value->get_string());
}

std::vector<std::string> texts(const json::object& object, std::string_view key) {
  std::vector<std::string> result;
  if (const json::value* value = object.if_contains(key)) {
    for (const json::value& entry : value->as_array()) result.emplace_back(entry.as_string());
  }
  return result;
}

std::map<std::string, std::string> pairs(const json::object& object, std::string_view key) {
  std::map<std::string, std::string> result;
  if (const json::value* value = object.if_contains(key)) {
    for (const auto& entry : value->as_object()) result.emplace(entry.key(), entry.value().as_string());
  }
  return result;
}

Article parseArticle(const json::object& object) {
  Article article;
  article.id = text(object, "id");
  article.title = text(object, "title");
  article.body = text(object, "body");
  article.hash = text(object, "hash");
  article.likes = text(object, "likes");
  article.keywordsetId = text(object, "keywordsetId");
  article.keywords = texts(object, "keywords");
  article.contexts = pairs(object, "contexts");
  if (article.id.empty()) throw std::runtime_error("every article needs an id");
  return article;
}

}  // namespace

ContextFilter parseContextFilter(std::string_view wire) {
  ContextFilter result;
  while (!wire.empty()) {
    const std::size_t comma = std::min(wire.find(','), wire.size());
    const std::string_view entry = wire.substr(0, comma);
    wire.remove_prefix(std::min(comma + 1, wire.size()));
    if (entry.empty()) continue;
    const std::size_t colon = entry.find(':');
    if (colon == std::string_view::npos) {
      result.emplace_back(std::string(entry), std::string());
    } else {
      result.emplace_back(std::string(entry.substr(0, colon)), std::string(entry.substr(colon + 1)));
    }
  }
  return result;
}

std::optional<std::string> decodeBase64(std::string_view text) {
  while (!text.empty() && text.back() == '=') text.remove_suffix(1);
  std::string bytes;
  uint32_t buffer = 0;
  int bits = 0;
  for (char c : text) {
    int value = -1;
    if (c >= 'A' && c <= 'Z') value = c - 'A';
    else if (c >= 'a' && c <= 'z') value = c - 'a' + 26;
    else if (c >= '0' && c <= '9') value = c - '0' + 52;
    else if (c == '+') value = 62;
    else if (c == '/') value = 63;
    if (value < 0) return std::nullopt;
    buffer = (buffer << 6) | static_cast<uint32_t>(value);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      bytes.push_back(static_cast<char>((buffer >> bits) & 0xFF));
    }
  }
  if (bits >= 6) return std::nullopt;  // a single dangling character
  return bytes;
}

KnowledgeBase KnowledgeBase::fromJson(std::string_view document) {
  KnowledgeBase kb;
  try {
    const json::object root = json::parse(document).as_object();
    kb.account_ = text(root, "account");
    kb.knowledgeBase_ = text(root, "knowledgeBase");
    kb.kbId_ = text(root, "kbId");
    kb.languageCode_ = text(root, "languageCode");
    for (const json::value& entry : root.at("articles").as_array()) kb.articles_.push_back(parseArticle(entry.as_object()));
    for (const json::value& entry : root.at("faqGroups").as_array()) {
      const json::object& object = entry.as_object();
      FaqGroup group;
      group.title = text(object, "title");
      if (const json::value* behavior = object.if_contains("behavior")) group.behavior = static_cast<int>(behavior->to_number<int64_t>());
      group.context = pairs(object, "context");
      group.articleIds = texts(object, "articles");
      kb.faqGroups_.push_back(std::move(group));
    }
    for (const json::value& entry : root.at("labels").as_array()) {
      const json::object& object = entry.as_object();
      Label label;
      label.id = text(object, "id");
      label.labelName = text(object, "labelName");
      if (const json::value* icon = object.if_contains("icon"); icon != nullptr && icon->is_string()) {
        label.icon = std::string(icon->get_string());
      }
      label.context = text(object, "context");
      label.articleIds = texts(object, "articles");
      kb.labels_.push_back(std::move(label));
    }
    if (const json::value* contexts = root.if_contains("contexts")) {
      for (const json::value& entry : contexts->as_array()) {
        const json::object& object = entry.as_object();
        ContextName name{text(object, "name"), text(object, "id"), {}};
        for (const json::value& value : object.at("values").as_array()) {
          name.values.push_back({text(value.as_object(), "id"), text(value.as_object(), "value")});
        }
        kb.contexts_.push_back(std::move(name));
      }
    }
  } catch (const std::exception& error) {
    throw std::runtime_error(std::string("knowledge base: ") + error.what());
  }
  if (kb.account_.empty() || kb.knowledgeBase_.empty()) {
    throw std::runtime_error("knowledge base: account and knowledgeBase are required");
  }
  // Every group and label must point at articles that exist.
  auto check = [&kb](const std::vector<std::string>& ids) {
    for (const std::string& id : ids) {
      if (kb.article(id) == nullptr) throw std::runtime_error("knowledge base: unknown article " + id);
    }
  };
  for (const FaqGroup& group : kb.faqGroups_) check(group.articleIds);
  for (const Label& label : kb.labels_) check(label.articleIds);
  return kb;
}

const Article* KnowledgeBase::article(std::string_view id) const {
  auto it = std::find_if(articles_.begin(), articles_.end(), [&](const Article& a) { return a.id == id; });
  return it == articles_.end() ? nullptr : &*it;
}

const Label* KnowledgeBase::label(std::string_view id) const {
  auto it = std::find_if(labels_.begin(), labels_.end(), [&](const Label& l) { return l.id == id; });
  return it == labels_.end() ? nullptr : &*it;
}

bool KnowledgeBase::inContext(const Article& article, const ContextFilter& filter) {
  return std::all_of(filter.begin(), filter.end(), [&](const auto& entry) {
    auto it = article.contexts.find(entry.first);
    return it != article.contexts.end() && it->second == entry.second;
  });
}

const KnowledgeBases& KnowledgeBases::builtIn() {
  static const KnowledgeBases bases = [] {
    KnowledgeBases result;
    for (std::string_view name : kKnowledgeBaseFiles) {
      const std::optional<std::string_view> document = embeddedFile(name);
      if (!document) throw std::runtime_error("knowledge base: " + std::string(name) + " was not embedded");
      result.add(KnowledgeBase::fromJson(*document));
    }
    return result;
  }();
  return bases;
}

const KnowledgeBase* KnowledgeBases::find(std::string_view account, std::string_view kb) const {
  auto it = std::find_if(bases_.begin(), bases_.end(), [&](const KnowledgeBase& base) {
    return base.account() == account && (kb.empty() || base.knowledgeBase() == kb);
  });
  return it == bases_.end() ? nullptr : &*it;
}

}  // namespace quorvix::sandbox
