// The configuration and FAQ commands: config, faq-list, label-faq, labels,
// answer and like.

#include <cmath>
#include <cstdio>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "commands/Commands.h"
#include "commands/FaqOutput.h"
#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/faq/FAQAnswer.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/search/QXQueryResult.h"
#include "tool/Runtime.h"

namespace quorvix::cli {
namespace {

/// How a configuration request ended.
struct ConfigurationOutcome {
  std::shared_ptr<QXConfiguration> configuration;
  std::optional<QXError> error;
};

/// Asks the engine for its configuration and waits for it. With `fresh` the
/// engine is prepared again first, so the configuration is fetched anew.
WaitOutcome<ConfigurationOutcome> awaitConfiguration(Runtime& runtime, bool fresh) {
  const auto& engine = runtime.engine();
  if (fresh) {
    engine->prepareWithAccountParams(runtime.params());
    // This preparation's configuration is the one waited for here.
    runtime.takeUnseenPreparation();
  }
  auto slot = std::make_shared<Handoff<ConfigurationOutcome>>();
  auto deliver = [slot](std::shared_ptr<QXConfiguration> configuration, std::optional<QXError> error) {
    slot->deliver(ConfigurationOutcome{std::move(configuration), std::move(error)});
  };
  engine->setFetchConfiguration(deliver);
  // A preparation whose fetch failed before the callback above was stored
  // would leave it waiting in vain: this call shares the fetch under way, or
  // starts one. The first answer counts.
  engine->whenConfigured(deliver);
  return runtime.await(*slot);
}

/// The answers of a group as rows "id  title".
void answerRows(const std::vector<std::shared_ptr<QXQueryResult>>& answers, TextResult& text) {
  for (const auto& answer : answers) {
    text.rows.emplace_back("  " + answer->resultId().value_or("?"), answer->title().value_or(""));
  }
}

ExitCode runConfig(Runtime& runtime) {
  // The preparation the engine started with fetches the configuration already;
  // every later `config` prepares again and so fetches anew.
  auto outcome = awaitConfiguration(runtime, !runtime.takeUnseenPreparation());
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  if (outcome.value->error) {
    runtime.output().engineError(*outcome.value->error);
    return ExitCode::EngineError;
  }
  const auto& configuration = *outcome.value->configuration;
  runtime.output().result(configurationText(configuration), configurationJson(configuration));
  return ExitCode::Success;
}

ExitCode runFaqList(Runtime& runtime) {
  auto slot = std::make_shared<Handoff<QXResponse>>();
  runtime.engine()->fetchFAQList([slot](QXResponse response) { slot->deliver(std::move(response)); });
  auto outcome = runtime.await(*slot);
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  const QXResponse& response = *outcome.value;
  if (response.error()) {
    runtime.output().engineError(*response.error());
    return ExitCode::EngineError;
  }
  const Json* list = response.typeJson();
  if (list == nullptr || !list->is_array()) {
    runtime.output().engineError(errors::notValidResponse());
    return ExitCode::EngineError;
  }
  TextResult text;
  text.heading = "FAQ list";
  for (const Json& entry : list->get_array()) {
    auto group = QXFAQGroup::initWithParams(entry.if_object());
    if (!group) continue;
    text.rows.emplace_back(group->title().value_or("(untitled)"), "");
    answerRows(group->data(), text);
  }
  runtime.output().result(text, documents::faqListDocument(*list));
  return ExitCode::Success;
}

ExitCode runLabelFaq(Runtime& runtime, const std::string& labelId) {
  auto label = std::make_shared<QXLabel>();
  label->setLabelId(labelId);
  using Answers = std::optional<std::vector<std::shared_ptr<QXQueryResult>>>;
  auto slot = std::make_shared<Handoff<Answers>>();
  runtime.engine()->faqForLabel(label, [slot](Answers answers) { slot->deliver(std::move(answers)); });
  auto outcome = runtime.await(*slot);
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  if (!*outcome.value) {
    // The engine reports a failed request as no answers, without an error.
    runtime.output().message("the label's FAQ group could not be read");
    return ExitCode::EngineError;
  }
  TextResult text;
  text.heading = "label " + labelId;
  answerRows(**outcome.value, text);
  runtime.output().result(text, documents::labelFaqDocument(labelId, **outcome.value));
  return ExitCode::Success;
}

ExitCode runLabels(Runtime& runtime) {
  // The request names the configuration's knowledge-base id: wait for it first.
  auto outcome = awaitConfiguration(runtime, false);
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  if (outcome.value->error) {
    runtime.output().engineError(*outcome.value->error);
    return ExitCode::EngineError;
  }
  const std::optional<Json> labels = runtime.engine()->labels();
  if (!labels) {
    runtime.output().message("the labels could not be read (run with --log for the reason)");
    return ExitCode::EngineError;
  }
  TextResult text;
  text.heading = "labels";
  if (labels->is_array()) {
    for (const Json& entry : labels->get_array()) {
      if (auto label = QXLabel::initWithParams(entry.if_object())) {
        text.rows.emplace_back(label->labelId().value_or("?"),
                               label->labelName().value_or("") + (label->iconUrl() ? "  " + *label->iconUrl() : ""));
      }
    }
  }
  runtime.output().result(text, documents::labelsDocument(*labels));
  return ExitCode::Success;
}

/// How an answer request ended.
struct AnswerOutcome {
  std::shared_ptr<FAQAnswer> answer;
  std::optional<QXError> error;
};

ExitCode runAnswer(Runtime& runtime, const std::string& id, const std::optional<std::string>& hash) {
  auto slot = std::make_shared<Handoff<AnswerOutcome>>();
  runtime.engine()->fetchFAQAnswer(id, hash, [slot](std::shared_ptr<FAQAnswer> answer, std::optional<QXError> error) {
    slot->deliver(AnswerOutcome{std::move(answer), std::move(error)});
  });
  auto outcome = runtime.await(*slot);
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  if (outcome.value->error || !outcome.value->answer) {
    runtime.output().engineError(outcome.value->error.value_or(errors::notValidResponse()));
    return ExitCode::EngineError;
  }
  const QXQueryResult& answer = *outcome.value->answer;
  runtime.output().result(queryResultText(answer), queryResultJson(answer));
  return ExitCode::Success;
}

/// What the like callback reported.
struct LikeOutcome {
  std::optional<std::string> resultId;
  int32_t action = 0;
  bool success = false;
};

ExitCode runLike(Runtime& runtime, const std::string& id, int32_t action, const std::optional<std::string>& reason) {
  auto result = std::make_shared<QXQueryResult>();
  result->setResultId(id);
  if (reason) result->setDislikeText(*reason);
  auto slot = std::make_shared<Handoff<LikeOutcome>>();
  runtime.engine()->like(action, result, [slot](std::optional<std::string> resultId, int32_t code, bool success) {
    slot->deliver(LikeOutcome{std::move(resultId), code, success});
  });
  auto outcome = runtime.await(*slot);
  if (!outcome.value) return runtime.reportUndelivered(outcome);
  const LikeOutcome& like = *outcome.value;
  TextResult text;
  text.rows.emplace_back("article", like.resultId.value_or(""));
  text.rows.emplace_back("action", std::to_string(like.action));
  text.rows.emplace_back("success", like.success ? "yes" : "no");
  runtime.output().result(text, documents::likeDocument(like.resultId, like.action, like.success));
  return like.success ? ExitCode::Success : ExitCode::EngineError;
}

}  // namespace

void registerFaqCommands(CommandRegistry& registry) {
  registry.add(CommandDef{
      .name = "config",
      .summary = "Fetch the widget configuration (setFetchConfiguration) and print it",
      .details = "Waits for the widget configuration of the engine's preparation and prints its titles, colours "
                 "(#RRGGBB), texts, switches, FAQ groups and labels. The first 'config' of a run shows what the "
                 "preparation at start fetched; a later one (in the shell) prepares the engine again first.",
      .define = [](CLI::App&) -> CommandAction { return runConfig; },
  });
  registry.add(CommandDef{
      .name = "faq-list",
      .summary = "Fetch the FAQ list (fetchFAQList) and print its groups",
      .details = "Prints each group's title and the id and title of its answers.",
      .define = [](CLI::App&) -> CommandAction { return runFaqList; },
  });
  registry.add(CommandDef{
      .name = "label-faq",
      .summary = "Fetch the FAQ group of a label (faqForLabel)",
      .details = "The group is filtered by the label only when the account names a label (--label-id); "
                 "otherwise the service answers the unfiltered group.",
      .define = [](CLI::App& app) -> CommandAction {
        auto labelId = std::make_shared<std::string>();
        app.add_option("LABEL_ID", *labelId, "the label's id")->required();
        return [labelId](Runtime& runtime) { return runLabelFaq(runtime, *labelId); };
      },
  });
  registry.add(CommandDef{
      .name = "labels",
      .summary = "Fetch the user's labels (labels), once the configuration has arrived",
      .details = "Needs the account's API key (--api-key; the embedded sandbox's demo account has it set).",
      .define = [](CLI::App&) -> CommandAction { return runLabels; },
  });
  registry.add(CommandDef{
      .name = "answer",
      .summary = "Fetch one answer (fetchFAQAnswer): the answer store first, then the service",
      .details = "Prints the answer's title, id, body and the extra data its body carries.",
      .define = [](CLI::App& app) -> CommandAction {
        auto id = std::make_shared<std::string>();
        auto hash = std::make_shared<std::optional<std::string>>();
        app.add_option("ID", *id, "the answer's id")->required();
        app.add_option("--hash", *hash, "the answer's hash (accepted, not used)");
        return [id, hash](Runtime& runtime) { return runAnswer(runtime, *id, *hash); };
      },
  });
  registry.add(CommandDef{
      .name = "like",
      .summary = "Report a like or dislike for an article (like) and print whether the service took it",
      .details = "ACTION is the service's feedback code, sent as it is; --text gives the reason of a "
                 "dislike. Exit code 1 when the service did not answer HTTP 200.",
      .define = [](CLI::App& app) -> CommandAction {
        auto id = std::make_shared<std::string>();
        auto action = std::make_shared<int32_t>(0);
        auto reason = std::make_shared<std::optional<std::string>>();
        app.add_option("ARTICLE_ID", *id, "the article's id")->required();
        app.add_option("ACTION", *action, "the feedback action code")->required();
        app.add_option("--text", *reason, "the reason of the vote");
        return [id, action, reason](Runtime& runtime) { return runLike(runtime, *id, *action, *reason); };
      },
  });
}

}  // namespace quorvix::cli
