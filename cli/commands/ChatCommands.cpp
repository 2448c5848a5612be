// The chat command: a conversation with the bot, statement by statement.

#include <CLI/CLI.hpp>
#include <boost/json.hpp>
#include <condition_variable>
#include <deque>
#include <fstream>
#include <istream>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "commands/Commands.h"
#include "engine/Helpers.h"
#include "quorvix/conversation/QXChatEngineDelegate.h"
#include "quorvix/conversation/QXConversationMissingEntity.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/conversation/QXPersonalInfo.h"
#include "tool/Runtime.h"

namespace quorvix::cli {
namespace {

// What the engine tells the command while an exchange runs: the reply, or a
// question of the bot for the user.
struct ReplyEvent {
  std::shared_ptr<QXConversationalResponse> response;
  std::optional<QXError> error;
};
struct EntitiesQuestion {
  std::shared_ptr<QXConversationalResponse> response;
  QXMissingEntitiesHandler handler;
};
struct PersonalInfoQuestion {
  std::shared_ptr<QXPersonalInfo> info;
};
using ChatEvent = std::variant<ReplyEvent, EntitiesQuestion, PersonalInfoQuestion>;

// Events from the engine's threads, taken on the command's thread.
class EventQueue {
 public:
  void push(ChatEvent event) {
    {
      std::lock_guard lock(mutex_);
      events_.push_back(std::move(event));
    }
    ready_.notify_all();
  }
  // Waits at most `slice` for the next event.
  std::optional<ChatEvent> take(std::chrono::steady_clock::duration slice) {
    std::unique_lock lock(mutex_);
    if (!ready_.wait_for(lock, slice, [this] { return !events_.empty(); })) return std::nullopt;
    ChatEvent event = std::move(events_.front());
    events_.pop_front();
    return event;
  }

 private:
  std::mutex mutex_;
  std::condition_variable ready_;
  std::deque<ChatEvent> events_;
};

// The command's side of the conversation: passes the bot's questions to the queue.
class ChatDelegate : public QXChatEngineDelegate {
 public:
  explicit ChatDelegate(std::shared_ptr<EventQueue> queue) : queue_(std::move(queue)) {}
  void shouldHandleMissingEntities(std::shared_ptr<QXConversationalResponse> response,
                                   QXMissingEntitiesHandler handler) override {
    queue_->push(EntitiesQuestion{std::move(response), std::move(handler)});
  }
  bool shouldHandlePersonalInformation(std::shared_ptr<QXPersonalInfo> info) override {
    queue_->push(PersonalInfoQuestion{std::move(info)});
    return true;
  }

 private:
  std::shared_ptr<EventQueue> queue_;
};

struct ChatOptions {
  std::string entities;
  bool textOnly = false;
  std::string answersFile;
  // The global --json, also accepted after the command.
  bool json = false;
};

// A masked reply carries its text as a JSON object with "text"; people read that text.
std::string readable(const std::string& text) {
  boost::system::error_code error;
  const Json parsed = boost::json::parse(text, error);
  if (!error && parsed.is_object()) {
    if (const auto* inner = parsed.get_object().if_contains("text"); inner != nullptr && inner->is_string()) {
      return std::string(inner->get_string());
    }
  }
  return text;
}

class ChatSession {
 public:
  ChatSession(Runtime& runtime, ChatOptions options, JsonObject answers)
      : runtime_(runtime),
        options_(std::move(options)),
        jsonOutput_(runtime.console(), true),
        output_(options_.json && !runtime.output().json() ? jsonOutput_ : runtime.output()),
        answers_(std::move(answers)),
        queue_(std::make_shared<EventQueue>()),
        delegate_(std::make_shared<ChatDelegate>(queue_)) {
    runtime_.engine()->setChatDelegate(delegate_);
  }
  ~ChatSession() { runtime_.engine()->setChatDelegate({}); }
  ChatSession(const ChatSession&) = delete;
  ChatSession& operator=(const ChatSession&) = delete;

  ExitCode run() {
    if (auto code = create(); code != ExitCode::Success) return code;
    std::string line;
    while (prompt("you> "), std::getline(runtime_.input(), line)) {
      if (line.empty()) continue;
      echo("you> ", line);
      if (line == "/quit" || line == "/exit") break;
      const auto code = handle(line);
      if (code == ExitCode::TimedOut) return code;
      result_ = worse(result_, code);
    }
    return result_;
  }

 private:
  bool interactive() const { return runtime_.console().terminal().stdinIsTerminal && !output_.json(); }
  // Lines read from a pipe or a script are shown after their prompt, as a
  // terminal would have shown them; the demo's are marked as its own.
  bool echoes() const { return !runtime_.console().terminal().stdinIsTerminal && !output_.json(); }
  void prompt(std::string_view text) {
    if (interactive()) runtime_.console().out(text);
  }
  // Shows a line read from the input after `prompt` (empty when the prompt is on the screen already).
  void echo(std::string_view prompt, std::string_view line) {
    if (!echoes()) return;
    runtime_.console().out(std::string(prompt) + std::string(line) +
                           (runtime_.inputIsScript() ? "    [scripted]\n" : "\n"));
  }

  ExitCode create() {
    auto slot = std::make_shared<Handoff<std::pair<std::optional<std::string>, std::optional<QXError>>>>();
    if (options_.entities.empty() && !options_.textOnly) {
      runtime_.engine()->createConversationWithCompletion(
          [slot](std::optional<std::string> id, std::optional<QXError> error) {
            slot->deliver({id, error});
          });
    } else {
      std::vector<std::string> entities;
      std::stringstream list(options_.entities);
      for (std::string entity; std::getline(list, entity, ',');) {
        if (!entity.empty()) entities.push_back(entity);
      }
      // This road leaves the id in the answer; the later exchanges pass it on.
      runtime_.engine()->createConversationWithEntities(
          std::move(entities), options_.textOnly, [slot](std::optional<Json> answer, std::optional<QXError> error) {
            std::optional<std::string> id;
            if (answer && answer->is_object()) {
              if (const auto* value = answer->get_object().if_contains("id"); value != nullptr && !value->is_null()) {
                id = describe(*value);
              }
            }
            slot->deliver({id, error});
          });
    }
    auto outcome = runtime_.await(*slot);
    if (!outcome.value) return runtime_.reportUndelivered(outcome);
    if (outcome.value->second) {
      output_.engineError(*outcome.value->second);
      return ExitCode::EngineError;
    }
    conversationId_ = outcome.value->first;
    TextResult text{"conversation " + conversationId_.value_or("(none)"), {}};
    output_.result(text, documents::conversationDocument(conversationId_));
    return ExitCode::Success;
  }

  // A line the user typed as a JSON object is a statement already; anything
  // else is sent as {"text": ...} so that tokens the user types are restored.
  static std::string statementOf(const std::string& line) {
    boost::system::error_code error;
    const Json parsed = boost::json::parse(line, error);
    if (!error && parsed.is_object()) return line;
    return boost::json::serialize(JsonObject{{"text", line}});
  }

  ExitCode handle(const std::string& line) {
    auto engine = runtime_.engine();
    auto completion = [queue = queue_](std::shared_ptr<QXConversationalResponse> response,
                                       std::optional<QXError> error) {
      queue->push(ReplyEvent{std::move(response), std::move(error)});
    };
    if (line == "/feedback") {
      engine->sendConversationFeedbackWithCompletion(
          [queue = queue_](std::shared_ptr<QXConversationalResponse> response) {
            queue->push(ReplyEvent{std::move(response), std::nullopt});
          });
    } else if (line.starts_with("/postback ")) {
      engine->conversationStatement(line.substr(10), true, conversationId_, completion);
    } else if (line.starts_with("/article ")) {
      engine->conversationArticle(line.substr(9), conversationId_, completion);
    } else if (auto postback = optionPostback(line)) {
      engine->conversationStatement(*postback, true, conversationId_, completion);
    } else if (line.starts_with("/")) {
      output_.message("unknown chat command '" + line + "' (use /postback, /article, /feedback, /quit)");
      return ExitCode::Usage;
    } else {
      engine->conversationStatement(statementOf(line), false, conversationId_, completion);
    }
    return awaitReply();
  }

  // A number picks an option of the last reply: its postback, or its text when it has none.
  std::optional<std::string> optionPostback(const std::string& line) const {
    if (line.empty() || line.size() > 3 || line.find_first_not_of("0123456789") != std::string::npos) {
      return std::nullopt;
    }
    const std::size_t index = std::stoul(line);
    if (index == 0 || index > shownOptions_.size()) return std::nullopt;
    const auto& option = shownOptions_[index - 1];
    if (auto postback = option->postback(); postback && postback->is_string()) {
      return std::string(postback->get_string());
    }
    return option->text();
  }

  ExitCode awaitReply() {
    const auto timeout = secondsToDuration(runtime_.options().timeoutSeconds);
    auto start = std::chrono::steady_clock::now();
    auto deadline = start + timeout;
    for (;;) {
      const auto now = std::chrono::steady_clock::now();
      if (now >= deadline) {
        runtime_.console().spinnerClear();
        output_.timedOut(runtime_.options().timeoutSeconds);
        return ExitCode::TimedOut;
      }
      auto event =
          queue_->take(std::min<std::chrono::steady_clock::duration>(deadline - now, std::chrono::milliseconds(20)));
      if (!event) {
        runtime_.console().spinnerTick(now - start);
        continue;
      }
      runtime_.console().spinnerClear();
      if (auto* reply = std::get_if<ReplyEvent>(&*event)) return show(*reply);
      if (auto* question = std::get_if<EntitiesQuestion>(&*event)) {
        switch (answerEntities(*question)) {
          case Answered::Yes:
            break;
          case Answered::No:
            return ExitCode::EngineError;
          case Answered::InputEnded:
            // The user left at the question; the conversation ends as at "/quit".
            output_.message("input ended before the bot's question was answered");
            return ExitCode::Success;
        }
      } else {
        answerPersonalInfo(std::get<PersonalInfoQuestion>(*event));
      }
      // The time the user took to answer does not count against the service.
      start = std::chrono::steady_clock::now();
      deadline = start + timeout;
    }
  }

  ExitCode show(const ReplyEvent& event) {
    if (event.error) {
      output_.engineError(*event.error);
      return ExitCode::EngineError;
    }
    if (!event.response) {
      output_.result(TextResult{"bot: (no reply)", {}}, documents::exchangeDocument(nullptr));
      return ExitCode::Success;
    }
    auto& reply = *event.response;
    shownOptions_.clear();
    TextResult text;
    text.heading = "bot: " + readable(reply.text().value_or(""));
    auto addOptions = [&](const auto& options) {
      if (!options) return;
      for (const auto& option : *options) {
        shownOptions_.push_back(option);
        std::string label = option->text().value_or("");
        if (auto external = option->external(); external && external->is_string()) {
          label += " <" + std::string(external->get_string()) + ">";
        }
        text.rows.emplace_back(std::to_string(shownOptions_.size()) + ")", label);
      }
    };
    addOptions(reply.quickOptions());
    addOptions(reply.persistentOptions());
    for (const auto& action : reply.actions().value_or(std::vector<std::shared_ptr<QXAction>>{})) {
      text.rows.emplace_back("button", "[" + action->text().value_or(action->actionId().value_or("")) + "]");
    }
    output_.result(text, documents::exchangeDocument(event.response));
    return ExitCode::Success;
  }

  // The value for a question: from --answers, else asked at the prompt (not with --json).
  std::optional<std::string> ask(const std::string& key, const std::string& question) {
    if (const auto* value = answers_.if_contains(key)) {
      return value->is_string() ? std::string(value->get_string()) : boost::json::serialize(*value);
    }
    if (output_.json()) return std::nullopt;
    runtime_.console().out(question + "\n" + key + "> ");
    std::string line;
    if (!std::getline(runtime_.input(), line)) {
      inputEnded_ = true;
      if (echoes()) runtime_.console().out("\n");
      return std::nullopt;
    }
    echo("", line);
    if (line.empty()) return std::nullopt;
    return line;
  }

  enum class Answered { Yes, No, InputEnded };

  Answered answerEntities(const EntitiesQuestion& question) {
    auto missing = QXConversationMissingEntity::initWithStatement(question.response->statement());
    const auto request = question.response->missingEntities();
    if (!output_.json()) {
      runtime_.console().out("bot: " + readable(question.response->text().value_or("")) + "\n");
    }
    if (request && request->is_array()) {
      for (const auto& wanted : request->get_array()) {
        const auto* fields = wanted.if_object();
        if (fields == nullptr) continue;
        const auto read = [fields](std::string_view key) -> std::string {
          const auto* value = fields->if_contains(key);
          return value != nullptr && value->is_string() ? std::string(value->get_string()) : "";
        };
        const std::string type = read("type");
        const std::string question_text = read("question").empty() ? "The bot needs a " + type + "." : read("question");
        auto value = ask(type, question_text);
        if (!value) continue;
        auto entity = std::make_shared<QXEntity>();
        entity->setType(type);
        entity->setValue(*value);
        if (!read("name").empty()) entity->setKind(read("name"));
        missing->addEntity(entity);
      }
    }
    if (missing->enteties().empty()) {
      if (inputEnded_) return Answered::InputEnded;
      // Resending nothing would only bring the same question back.
      output_.message("the bot asked for entities and none were given");
      return Answered::No;
    }
    question.handler(missing);
    return Answered::Yes;
  }

  void answerPersonalInfo(const PersonalInfoQuestion& question) {
    const auto& info = question.info;
    std::string arguments;
    for (const auto& argument : info->methodArgs()) arguments += (arguments.empty() ? "" : ", ") + argument;
    auto value = ask(info->personalInfoId(),
                     "The bot asks for " + info->personalInfoId() + " (" + arguments + "); empty for a button.");
    if (const auto& callback = info->personalInfoCallback()) callback(value, nullptr);
  }

  Runtime& runtime_;
  ChatOptions options_;
  Output jsonOutput_;
  Output& output_;
  JsonObject answers_;
  std::shared_ptr<EventQueue> queue_;
  std::shared_ptr<ChatDelegate> delegate_;
  std::optional<std::string> conversationId_;
  std::vector<std::shared_ptr<QXConversationQuickOption>> shownOptions_;
  ExitCode result_ = ExitCode::Success;
  bool inputEnded_ = false;
};

ExitCode runChat(Runtime& runtime, const ChatOptions& options) {
  JsonObject answers;
  if (!options.answersFile.empty()) {
    std::ifstream file(options.answersFile);
    std::stringstream text;
    text << file.rdbuf();
    boost::system::error_code error;
    const Json parsed = boost::json::parse(text.str(), error);
    if (!file || error || !parsed.is_object()) {
      runtime.output().message("--answers " + options.answersFile + ": not a readable JSON object");
      return ExitCode::Usage;
    }
    answers = parsed.get_object();
  }
  ChatSession session(runtime, options, std::move(answers));
  return session.run();
}

}  // namespace

void registerChatCommands(CommandRegistry& registry) {
  registry.add(CommandDef{
      .name = "chat",
      .summary = "Talk to the bot: statements from stdin, one per line",
      .details = "Opens a conversation, then sends each line of stdin as a statement and prints the bot's reply: "
                 "its text, options numbered (type a number to press one), buttons. Lines '/postback PAYLOAD', "
                 "'/article ID' and '/feedback' send those; '/quit' ends. The bot's questions for missing entities "
                 "and personal information are asked at the prompt, or answered from --answers FILE (a JSON object "
                 "from entity type or personal-information id to value; with --json only from there); input that "
                 "ends at such a question ends the chat. A line that is a JSON object is sent as the statement "
                 "itself. With --json each reply is one JSON line.",
      .scope = CommandScope::CommandLine,
      .usesEngine = true,
      .define = [](CLI::App& sub) -> CommandAction {
        auto options = std::make_shared<ChatOptions>();
        sub.add_option("--entities", options->entities,
                       "Open the conversation declaring these entities (comma-separated: number,date,...)");
        sub.add_flag("--text-only", options->textOnly, "Open the conversation asking for text-only replies");
        sub.add_option("--answers", options->answersFile,
                       "File holding a JSON object that answers the bot's questions (entity type or "
                       "personal-information id to value)")
            ->type_name("FILE");
        sub.add_flag("--json", options->json, "Print each reply as one JSON line (as the global --json)");
        return [options](Runtime& runtime) { return runChat(runtime, *options); };
      },
  });
}

}  // namespace quorvix::cli
