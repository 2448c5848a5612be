// The conversation bot: "create", "statement" (statements, postbacks, article
// requests and missing entities) and "createFeedbackResponse", driven by the
// dialogue script in data/bot-dialogue.json.

#include <boost/json.hpp>
#include <cctype>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "EmbeddedData.h"
#include "endpoints/Endpoints.h"

namespace quorvix::sandbox {

namespace {

namespace json = boost::json;

// An entity the bot needs before it can answer an intent.
struct Need {
  std::string type;
  std::string name;
  std::string question;
};

struct Intent {
  std::string name;
  std::vector<std::string> keywords;
  std::vector<Need> needs;
  std::string missingText;
  json::object reply;
};

// The dialogue script, read once from the embedded data file.
struct Script {
  int64_t firstConversationId = 1;
  json::object fallback;
  json::object feedback;
  std::vector<Intent> intents;
  json::object articles;
};

std::string lowered(std::string_view text) {
  std::string result;
  result.reserve(text.size() + 2);
  result.push_back(' ');
  for (char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    result.push_back(std::isalnum(byte) != 0 ? static_cast<char>(std::tolower(byte)) : ' ');
  }
  result.push_back(' ');
  return result;
}

// Replaces "@name" references to shared lists of the script by the lists.
json::object resolved(json::object reply, const json::object& root) {
  for (auto& entry : reply) {
    if (const auto* reference = entry.value().if_string(); reference != nullptr && reference->starts_with("@")) {
      if (const auto* list = root.if_contains(reference->subview(1))) entry.value() = *list;
    }
  }
  return reply;
}

const Script& script() {
  static const Script loaded = [] {
    const std::optional<std::string_view> text = embeddedFile("bot-dialogue.json");
    if (!text) throw std::runtime_error("the bot's dialogue script was not embedded");
    const json::object root = json::parse(*text).as_object();
    Script result;
    result.firstConversationId = root.at("firstConversationId").to_number<int64_t>();
    result.fallback = resolved(root.at("fallback").as_object(), root);
    result.feedback = root.at("feedback").as_object();
    result.articles = root.at("articles").as_object();
    for (const auto& value : root.at("intents").as_array()) {
      const auto& object = value.as_object();
      Intent intent;
      intent.name = json::value_to<std::string>(object.at("name"));
      for (const auto& keyword : object.at("keywords").as_array()) {
        intent.keywords.push_back(lowered(keyword.as_string()));
      }
      if (const auto* needs = object.if_contains("needs")) {
        for (const auto& need : needs->as_array()) {
          intent.needs.push_back(Need{json::value_to<std::string>(need.at("type")),
                                      json::value_to<std::string>(need.at("name")),
                                      json::value_to<std::string>(need.at("question"))});
        }
      }
      if (const auto* missing = object.if_contains("missingText"))
        intent.missingText = json::value_to<std::string>(*missing);
      intent.reply = resolved(object.at("reply").as_object(), root);
      result.intents.push_back(std::move(intent));
    }
    return result;
  }();
  return loaded;
}

// One open conversation.
struct Conversation {
  std::string account;
  std::vector<std::string> supportedEntities;
  // Entity values the user gave, by entity type.
  std::map<std::string, std::string> entities;
};

// The open conversations of every account. Thread-safe.
class Conversations {
 public:
  int64_t open(std::string account, std::vector<std::string> supportedEntities) {
    std::lock_guard lock(mutex_);
    const int64_t id = next_++;
    conversations_[id] = Conversation{std::move(account), std::move(supportedEntities), {}};
    return id;
  }

  // Runs `action` on the conversation of that id and account; false when there is none.
  template <class Action>
  bool with(std::string_view id, const std::string& account, Action&& action) {
    int64_t number = 0;
    for (char c : id) {
      if (c < '0' || c > '9' || number > 1'000'000'000'000) return false;
      number = number * 10 + (c - '0');
    }
    if (id.empty()) return false;
    std::lock_guard lock(mutex_);
    auto found = conversations_.find(number);
    if (found == conversations_.end() || found->second.account != account) return false;
    action(found->second);
    return true;
  }

 private:
  std::mutex mutex_;
  int64_t next_ = script().firstConversationId;
  std::map<int64_t, Conversation> conversations_;
};

std::vector<std::string> splitCommas(std::string_view text) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const std::size_t comma = std::min(text.find(','), text.size());
    if (comma > 0) parts.emplace_back(text.substr(0, comma));
    text.remove_prefix(std::min(comma + 1, text.size()));
  }
  return parts;
}

Reply create(const EndpointRequest& request, Conversations& conversations) {
  // A key is checked only when one is sent; an empty one counts as none.
  if (auto key = request.queryValue("apiKey"); key && !key->empty() && *key != request.account.apiKey) {
    return Reply::error(403, "Invalid API key");
  }
  const auto supported = splitCommas(request.queryValueOr("supportedEntities", ""));
  const int64_t id = conversations.open(request.account.name, supported);
  json::array entities;
  for (const auto& entity : supported) entities.emplace_back(entity);
  return Reply::json(json::object{{"id", id}, {"status", 200}, {"supportedEntities", std::move(entities)}});
}

// The user's words: the "text" of a JSON statement, or the statement itself.
std::string wordsOf(const std::string& statement) {
  boost::system::error_code error;
  const json::value parsed = json::parse(statement, error);
  if (!error && parsed.is_object()) {
    if (const auto* text = parsed.as_object().if_contains("text"); text != nullptr && text->is_string()) {
      return std::string(text->as_string());
    }
  }
  return statement;
}

const Intent* intentFor(const std::string& words, bool postback) {
  const std::string text = lowered(words);
  for (const auto& intent : script().intents) {
    if (postback) {
      if (lowered(intent.name) == text) return &intent;
      continue;
    }
    for (const auto& keyword : intent.keywords) {
      if (text.find(keyword) != std::string::npos) return &intent;
    }
  }
  return nullptr;
}

// Reads the host's entities ([{"type": ..., "value": ...}, ...]) into the conversation.
void remember(Conversation& conversation, const std::optional<std::string>& entities) {
  if (!entities) return;
  boost::system::error_code error;
  const json::value parsed = json::parse(*entities, error);
  if (error || !parsed.is_array()) return;
  for (const auto& entity : parsed.as_array()) {
    const auto* object = entity.if_object();
    if (object == nullptr) continue;
    const auto* type = object->if_contains("type");
    const auto* value = object->if_contains("value");
    if (type == nullptr || !type->is_string() || value == nullptr) continue;
    conversation.entities[std::string(type->as_string())] =
        value->is_string() ? std::string(value->as_string()) : json::serialize(*value);
  }
}

std::string filled(std::string text, const Intent& intent, const Conversation& conversation) {
  for (const auto& need : intent.needs) {
    const std::string slot = "{" + need.name + "}";
    const auto found = conversation.entities.find(need.type);
    const std::string value = found == conversation.entities.end() ? "" : found->second;
    for (auto at = text.find(slot); at != std::string::npos; at = text.find(slot, at + value.size())) {
      text.replace(at, slot.size(), value);
    }
  }
  return text;
}

json::object answer(const Intent& intent, Conversation& conversation, const std::string& statement) {
  json::array missing;
  for (const auto& need : intent.needs) {
    if (conversation.entities.count(need.type) == 0) {
      missing.push_back(json::object{{"type", need.type}, {"name", need.name}, {"question", need.question}});
    }
  }
  if (!missing.empty()) {
    return json::object{{"status", 200},
                        {"statement", statement},
                        {"text", intent.missingText},
                        {"missingEntities", std::move(missing)}};
  }
  json::object reply = intent.reply;
  if (auto* text = reply.if_contains("text"); text != nullptr && text->is_string()) {
    *text = filled(std::string(text->as_string()), intent, conversation);
  }
  // The values given for this intent were used up.
  for (const auto& need : intent.needs) conversation.entities.erase(need.type);
  reply["status"] = 200;
  reply["statement"] = statement;
  return reply;
}

// An article of the script as a bot reply: its body is the reply's text.
std::optional<Reply> articleReply(const std::string& id) {
  const auto* article = script().articles.if_contains(id);
  if (article == nullptr) return std::nullopt;
  return Reply::json(
      json::object{{"status", 200}, {"articleId", id}, {"title", article->at("title")}, {"text", article->at("body")}});
}

Reply statement(const EndpointRequest& request, Conversations& conversations) {
  std::optional<Reply> reply;
  const bool known =
      conversations.with(request.queryValueOr("id", ""), request.account.name, [&](Conversation& conversation) {
        if (auto articleId = request.queryValue("articleId")) {
          reply = articleReply(*articleId);
          if (!reply) reply = Reply::error(404, "Unknown article");
          return;
        }
        const auto postback = request.queryValue("postback");
        const std::string said = postback ? *postback : request.queryValueOr("statement", "");
        remember(conversation, request.queryValue("entities"));
        std::string words = wordsOf(said);
        bool asPostback = postback.has_value();
        // A pressed "read more" option asks for its article.
        if (asPostback && words.starts_with("article:")) {
          reply = articleReply(words.substr(8));
          if (reply) return;
        }
        const Intent* intent = intentFor(words, asPostback);
        if (intent == nullptr && asPostback) intent = intentFor(words, false);
        json::object body = intent ? answer(*intent, conversation, said) : script().fallback;
        if (intent == nullptr) body["status"] = 200;
        reply = Reply::json(body);
      });
  if (!known) return Reply::error(404, "Unknown conversation");
  return *reply;
}

Reply feedback(const EndpointRequest& request, Conversations& conversations) {
  const bool known = conversations.with(request.queryValueOr("id", ""), request.account.name, [](Conversation&) {});
  if (!known) return Reply::error(404, "Unknown conversation");
  json::object body = script().feedback;
  body["status"] = 200;
  return Reply::json(body);
}

}  // namespace

void registerConversationEndpoints(Router& router) {
  auto conversations = std::make_shared<Conversations>();
  router.add("/api/conversation/v1/create",
             [conversations](const EndpointRequest& request) { return create(request, *conversations); });
  router.add("/api/conversation/v1/statement",
             [conversations](const EndpointRequest& request) { return statement(request, *conversations); });
  router.add("/api/conversation/v1/createFeedbackResponse",
             [conversations](const EndpointRequest& request) { return feedback(request, *conversations); });
}

}  // namespace quorvix::sandbox
