// The search, suggestion, context and channel commands: search, suggest,
// contexts, set-context, channels, report and track.

#include <CLI/CLI.hpp>
#include <boost/json.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "commands/DeliveryWatch.h"
#include "commands/LatestSearch.h"
#include "commands/SearchOutput.h"
#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/faq/FAQAnswer.h"
#include "quorvix/search/QXAutoCompleteResponse.h"
#include "quorvix/search/QXSearchResponse.h"
#include "quorvix/search/SearchAnswer.h"
#include "tool/Runtime.h"

namespace quorvix::cli {
namespace {

/// A result or an error, as the engine's completions hand them over.
template <class T>
struct Answer {
  T value;
  std::optional<QXError> error;
};

/// Prints the error of an answer; true when there was one.
template <class T>
bool reportedError(Runtime& runtime, const Answer<T>& answer) {
  if (!answer.error) return false;
  runtime.output().engineError(*answer.error);
  return true;
}

ExitCode usage(Runtime& runtime, const std::string& text) {
  runtime.output().message(text);
  return ExitCode::Usage;
}

ExitCode runSearch(Runtime& runtime, const std::string& text) {
  using Reply = Answer<std::shared_ptr<QXSearchResponse>>;
  auto slot = std::make_shared<Handoff<Reply>>();
  auto sessionFailed = runtime.watchSessionStart();
  runtime.engine()->searchText(text, [slot](std::shared_ptr<QXSearchResponse> response, std::optional<QXError> error) {
    slot->deliver(Reply{std::move(response), std::move(error)});
  });
  auto outcome = runtime.await(*slot, std::move(sessionFailed));
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  if (reportedError(runtime, *outcome.value)) return ExitCode::EngineError;
  const std::shared_ptr<QXSearchResponse>& response = outcome.value->value;
  if (!response) {
    runtime.output().engineError(errors::notValidResponse());
    return ExitCode::EngineError;
  }
  LatestSearch::remember(response);

  if (runtime.output().json()) {
    runtime.output().result({}, searchResponseJson(*response));
    return ExitCode::Success;
  }
  const auto& answers = response->answerList();
  TextResult summary;
  summary.heading = std::to_string(answers.size()) + (answers.size() == 1 ? " answer" : " answers") + " for \"" +
                    text + "\"";
  if (const auto& context = response->context(); context && !context->values().empty()) {
    std::string values;
    for (const auto& value : context->values()) {
      if (!values.empty()) values += ", ";
      values += value->name().value_or("?") + (value->flags() != 0 ? " (chosen)" : "");
    }
    summary.rows.emplace_back("contexts", values);
  }
  if (const auto channels = response->channels()) {
    for (std::size_t i = 0; i < channels->size(); ++i) {
      summary.rows.emplace_back(i == 0 ? "general channels" : "", channelLine(*(*channels)[i]));
    }
  }
  runtime.output().result(summary, {});
  for (std::size_t i = 0; i < answers.size(); ++i) runtime.output().result(searchAnswerText(*answers[i], i + 1), {});
  return ExitCode::Success;
}

/// Waits for the configuration the suggestions are styled with; a failed
/// fetch leaves the engine's default fonts.
std::optional<ExitCode> awaitFonts(Runtime& runtime) {
  const auto& engine = runtime.engine();
  if (engine->isPrepared()) return std::nullopt;
  using Reply = Answer<std::shared_ptr<QXConfiguration>>;
  auto slot = std::make_shared<Handoff<Reply>>();
  engine->whenConfigured([slot](std::shared_ptr<QXConfiguration> configuration, std::optional<QXError> error) {
    slot->deliver(Reply{std::move(configuration), std::move(error)});
  });
  auto outcome = runtime.await(*slot);
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  return std::nullopt;
}

ExitCode runSuggest(Runtime& runtime, const std::string& text) {
  if (auto failed = awaitFonts(runtime)) return *failed;
  using Reply = Answer<std::shared_ptr<QXAutoCompleteResponse>>;
  auto slot = std::make_shared<Handoff<Reply>>();
  auto sessionFailed = runtime.watchSessionStart();
  runtime.engine()->suggestionsForText(
      text, [slot](std::shared_ptr<QXAutoCompleteResponse> response, std::optional<QXError> error) {
        slot->deliver(Reply{std::move(response), std::move(error)});
      });
  auto outcome = runtime.await(*slot, std::move(sessionFailed));
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  if (reportedError(runtime, *outcome.value)) return ExitCode::EngineError;
  const std::shared_ptr<QXAutoCompleteResponse>& response = outcome.value->value;
  if (!response) {
    runtime.output().engineError(errors::notValidResponse());
    return ExitCode::EngineError;
  }
  const std::vector<QXStyledText> suggestions = response->suggestions();

  TextResult human;
  human.heading = std::to_string(suggestions.size()) + (suggestions.size() == 1 ? " suggestion" : " suggestions") +
                  " for \"" + text + "\"";
  for (std::size_t i = 0; i < suggestions.size(); ++i) {
    human.rows.emplace_back(std::to_string(i + 1), markedText(suggestions[i], response->font()));
  }
  runtime.output().result(human, documents::suggestionsDocument(*response, suggestions));
  return ExitCode::Success;
}

/// The reply's values for people: one row per context, its values in order.
TextResult contextValuesText(const std::string& names, const Json& reply) {
  TextResult text;
  text.heading = "context values" + (names.empty() ? std::string() : " of " + names);
  const Json* values = reply.is_object() ? reply.get_object().if_contains("values") : nullptr;
  if (values == nullptr || !values->is_object()) {
    text.rows.emplace_back("reply", boost::json::serialize(reply));
    return text;
  }
  for (const auto& entry : values->get_object()) {
    std::string line;
    if (entry.value().is_array()) {
      for (const Json& value : entry.value().get_array()) {
        const auto* object = value.if_object();
        if (object == nullptr) continue;
        const Json* name = object->if_contains("name");
        const Json* id = object->if_contains("id");
        const Json* selected = object->if_contains("selected");
        if (!line.empty()) line += ", ";
        line += name && name->is_string() ? std::string(name->get_string()) : "?";
        if (id) line += " [" + (id->is_string() ? std::string(id->get_string()) : boost::json::serialize(*id)) + "]";
        if (selected && selected->is_bool() && selected->get_bool()) line += " (chosen)";
      }
    } else {
      line = boost::json::serialize(entry.value());
    }
    text.rows.emplace_back(std::string(entry.key()), line);
  }
  return text;
}

ExitCode runContexts(Runtime& runtime, const std::string& names) {
  using Reply = Answer<std::optional<Json>>;
  auto slot = std::make_shared<Handoff<Reply>>();
  auto sessionFailed = runtime.watchSessionStart();
  runtime.engine()->contextValue(names, [slot](std::optional<Json> reply, std::optional<QXError> error) {
    slot->deliver(Reply{std::move(reply), std::move(error)});
  });
  auto outcome = runtime.await(*slot, std::move(sessionFailed));
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  if (reportedError(runtime, *outcome.value)) return ExitCode::EngineError;
  const Json reply = outcome.value->value.value_or(Json(nullptr));
  runtime.output().result(contextValuesText(names, reply), documents::contextsDocument(names, reply));
  return ExitCode::Success;
}

ExitCode runSetContext(Runtime& runtime, const std::string& entry) {
  const auto colon = entry.find(':');
  if (colon == std::string::npos || colon == 0) {
    return usage(runtime, "set-context wants NAME:VALUE, got \"" + entry + "\"");
  }
  const std::string name = entry.substr(0, colon);
  const std::string value = entry.substr(colon + 1);
  using Reply = Answer<bool>;
  auto slot = std::make_shared<Handoff<Reply>>();
  auto sessionFailed = runtime.watchSessionStart();
  runtime.engine()->changeContext(JsonObject{{name, value}}, [slot](bool accepted, std::optional<QXError> error) {
    slot->deliver(Reply{accepted, std::move(error)});
  });
  auto outcome = runtime.await(*slot, std::move(sessionFailed));
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  if (reportedError(runtime, *outcome.value)) return ExitCode::EngineError;
  if (!outcome.value->value) {
    runtime.output().message("the service did not accept the context");
    return ExitCode::EngineError;
  }
  TextResult text;
  text.rows.emplace_back("context", name + " = " + value);
  text.rows.emplace_back("accepted", "yes");
  runtime.output().result(text, documents::changeContextDocument(name, Json(value), true));
  return ExitCode::Success;
}

using ChannelList = std::vector<std::shared_ptr<QXChanneling>>;

/// The channels of an article as the service gives them for its like state.
std::optional<ChannelList> fetchChannels(Runtime& runtime, const std::shared_ptr<QXQueryResult>& article,
                                         const std::optional<std::string>& context, ExitCode& failure) {
  using Reply = Answer<std::optional<ChannelList>>;
  auto slot = std::make_shared<Handoff<Reply>>();
  runtime.engine()->channels(article, context, [slot](std::optional<ChannelList> list, std::optional<QXError> error) {
    slot->deliver(Reply{std::move(list), std::move(error)});
  });
  auto outcome = runtime.await(*slot);
  if (!outcome.value) {
    failure = runtime.reportUndelivered(outcome);
    return std::nullopt;
  }
  if (reportedError(runtime, *outcome.value)) {
    failure = ExitCode::EngineError;
    return std::nullopt;
  }
  return outcome.value->value.value_or(ChannelList{});
}

ExitCode runChannels(Runtime& runtime, const std::string& articleId, const std::optional<std::string>& context,
                     int32_t likeState) {
  auto article = std::make_shared<QXQueryResult>();
  article->setResultId(articleId);
  article->setLikeState(likeState);
  ExitCode failure = ExitCode::Success;
  const std::optional<ChannelList> channels = fetchChannels(runtime, article, context, failure);
  if (!channels) return failure;
  TextResult text;
  text.heading = "channels of " + articleId;
  for (std::size_t i = 0; i < channels->size(); ++i) {
    text.rows.emplace_back(std::to_string(i), channelLine(*(*channels)[i]));
  }
  if (channels->empty()) text.rows.emplace_back("none", "");
  runtime.output().result(text, documents::channelsDocument(articleId, *channels));
  return ExitCode::Success;
}

/// Waits for a fire-and-forget request to be answered and prints how it went.
ExitCode awaitDelivery(Runtime& runtime, DeliveryWatch& watch, TextResult text, JsonObject json) {
  auto outcome = runtime.await(watch.delivered());
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  const Delivery& delivery = *outcome.value;
  if (delivery.error) {
    runtime.output().engineError(*delivery.error);
    return ExitCode::EngineError;
  }
  const long status = delivery.status.value_or(0);
  text.rows.emplace_back("service", "HTTP " + std::to_string(status));
  json["httpStatus"] = status;
  runtime.output().result(text, json);
  return status == 200 ? ExitCode::Success : ExitCode::EngineError;
}

/// The FAQ answer of that id, with its channels.
std::shared_ptr<QXQueryResult> fetchAnswer(Runtime& runtime, const std::string& articleId, ExitCode& failure) {
  using Reply = Answer<std::shared_ptr<FAQAnswer>>;
  auto slot = std::make_shared<Handoff<Reply>>();
  runtime.engine()->fetchFAQAnswer(articleId, std::nullopt,
                                   [slot](std::shared_ptr<FAQAnswer> answer, std::optional<QXError> error) {
                                     slot->deliver(Reply{std::move(answer), std::move(error)});
                                   });
  auto outcome = runtime.await(*slot);
  if (!outcome.value) {
    failure = runtime.reportUndelivered(outcome);
    return nullptr;
  }
  if (reportedError(runtime, *outcome.value)) {
    failure = ExitCode::EngineError;
    return nullptr;
  }
  if (!outcome.value->value) {
    runtime.output().engineError(errors::notValidResponse());
    failure = ExitCode::EngineError;
  }
  return outcome.value->value;
}

ExitCode runReport(Runtime& runtime, const std::string& articleId, std::size_t index, bool faq) {
  std::shared_ptr<QXQueryResult> article;
  ExitCode failure = ExitCode::Success;
  if (faq) {
    article = fetchAnswer(runtime, articleId, failure);
    if (!article) return failure;
    // An answer that arrives without channels gets those the service offers for it.
    if (article->channeling().empty()) {
      std::optional<ChannelList> channels = fetchChannels(runtime, article, std::nullopt, failure);
      if (!channels) return failure;
      article->setChanneling(std::move(*channels));
    }
  } else {
    article = LatestSearch::hit(articleId);
    if (!article) {
      return usage(runtime, "no hit " + articleId + " in the latest search of this process "
                            "(run search first, inside shell), or use --faq");
    }
  }
  const ChannelList& channels = article->channeling();
  if (index >= channels.size()) {
    return usage(runtime, "article " + articleId + " has " + std::to_string(channels.size()) +
                              " channels; there is no channel " + std::to_string(index));
  }
  const std::shared_ptr<QXChanneling>& channel = channels[index];
  const bool escalation = std::dynamic_pointer_cast<SearchAnswer>(article) != nullptr;
  auto watch = DeliveryWatch::install(runtime.engine(), escalation ? "/escalate" : "/report");
  runtime.engine()->reportChanneling(channel, article);
  TextResult text;
  text.heading = escalation ? "escalation reported" : "channel use reported";
  text.rows.emplace_back("article", articleId + " " + article->title().value_or(""));
  text.rows.emplace_back("channel", channelLine(*channel));
  JsonObject json = documents::reportDocument(articleId, escalation, *channel);
  const ExitCode code = awaitDelivery(runtime, *watch, std::move(text), std::move(json));
  watch->uninstall();
  return code;
}

ExitCode runTrack(Runtime& runtime, const std::string& eventText) {
  boost::system::error_code parseError;
  Json event = boost::json::parse(eventText, parseError);
  if (parseError || !event.is_object()) return usage(runtime, "track wants a JSON object, got \"" + eventText + "\"");
  auto watch = DeliveryWatch::install(runtime.engine(), "/api/widget/v1/trackEvent");
  runtime.engine()->trackEvent(event.get_object());
  TextResult text;
  text.heading = "event tracked";
  text.rows.emplace_back("data", boost::json::serialize(event));
  const ExitCode code = awaitDelivery(runtime, *watch, std::move(text), JsonObject{{"event", event}});
  watch->uninstall();
  return code;
}

}  // namespace

void registerSearchCommands(CommandRegistry& registry) {
  registry.add(CommandDef{
      .name = "search",
      .summary = "Search the knowledge base (searchText); print each hit with body and channels",
      .details = "Prints the hits best first: title, id, body, extra data, context and channels (numbered for "
                 "`report`). With --json: the whole reply with every property. Inside `shell`, `report` uses "
                 "the hits of the latest search.",
      .define = [](CLI::App& app) -> CommandAction {
        auto text = std::make_shared<std::string>();
        app.add_option("TEXT", *text, "what to search for")->required();
        return [text](Runtime& runtime) { return runSearch(runtime, *text); };
      },
  });
  registry.add(CommandDef{
      .name = "suggest",
      .summary = "Suggestions for a typed text (suggestionsForText), emphasised words as *word*",
      .details = "Styles the service's phrases with the configured autocomplete fonts and prints each with its "
                 "emphasised words marked *like this*. With --json: {\"query\", \"a\", \"suggestions\": [{\"text\", "
                 "\"runs\"}]}, run positions in UTF-16 units.",
      .define = [](CLI::App& app) -> CommandAction {
        auto text = std::make_shared<std::string>();
        app.add_option("TEXT", *text, "the text typed so far")->required();
        return [text](Runtime& runtime) { return runSuggest(runtime, *text); };
      },
  });
  registry.add(CommandDef{
      .name = "contexts",
      .summary = "List the values of contexts (contextValue)",
      .details = "NAMES is sent as given, e.g. \"product\" or \"product,platform\"; the service's whole reply "
                 "is the result.",
      .define = [](CLI::App& app) -> CommandAction {
        auto names = std::make_shared<std::string>();
        app.add_option("NAMES", *names, "the contexts, comma-separated")->required();
        return [names](Runtime& runtime) { return runContexts(runtime, *names); };
      },
  });
  registry.add(CommandDef{
      .name = "set-context",
      .summary = "Narrow later searches to a context value (changeContext)",
      .details = "Adds NAME:VALUE to the account's context and sends the whole context to the service; later "
                 "searches of the session see only what applies under it. Use it inside `shell`.",
      .define = [](CLI::App& app) -> CommandAction {
        auto entry = std::make_shared<std::string>();
        app.add_option("NAME:VALUE", *entry, "the context and its value")->required();
        return [entry](Runtime& runtime) { return runSetContext(runtime, *entry); };
      },
  });
  registry.add(CommandDef{
      .name = "channels",
      .summary = "The escalation channels of an article (channels)",
      .details = "The service chooses the channels by the article, the user's like state (0 none, 1 liked, "
                 "2 disliked) and the context.",
      .define = [](CLI::App& app) -> CommandAction {
        auto id = std::make_shared<std::string>();
        auto context = std::make_shared<std::optional<std::string>>();
        auto likeState = std::make_shared<int32_t>(0);
        app.add_option("ARTICLE_ID", *id, "the article's id")->required();
        app.add_option("--context", *context, "a context text, e.g. product:Router X1");
        app.add_option("--like-state", *likeState, "0 none, 1 liked, 2 disliked")->check(CLI::Range(0, 2));
        return [id, context, likeState](Runtime& runtime) { return runChannels(runtime, *id, *context, *likeState); };
      },
  });
  registry.add(CommandDef{
      .name = "report",
      .summary = "Report the use of an article's channel (reportChanneling)",
      .details = "Without --faq the article is the hit ARTICLE_ID of the latest `search` of this process (use it "
                 "inside `shell`) and the use is reported as an escalation inside the session; with --faq the "
                 "answer is fetched and the use is reported without a session. CHANNEL_INDEX counts from 0 as "
                 "`search` and `channels` number them. Waits until the service has answered.",
      .define = [](CLI::App& app) -> CommandAction {
        auto id = std::make_shared<std::string>();
        auto index = std::make_shared<std::size_t>(0);
        auto faq = std::make_shared<bool>(false);
        app.add_option("ARTICLE_ID", *id, "the article's id")->required();
        app.add_option("CHANNEL_INDEX", *index, "the channel's number")->required();
        app.add_flag("--faq", *faq, "the article is an FAQ answer");
        return [id, index, faq](Runtime& runtime) { return runReport(runtime, *id, *index, *faq); };
      },
  });
  registry.add(CommandDef{
      .name = "track",
      .summary = "Send a tracked event of the conversation (trackEvent)",
      .details = "JSON is the event, an object, e.g. '{\"action\":\"opened\"}'. Waits until the service has answered.",
      .define = [](CLI::App& app) -> CommandAction {
        auto event = std::make_shared<std::string>();
        app.add_option("JSON", *event, "the event as a JSON object")->required();
        return [event](Runtime& runtime) { return runTrack(runtime, *event); };
      },
  });
}

}  // namespace quorvix::cli
