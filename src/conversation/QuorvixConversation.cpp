// The bot conversation's operations of the engine facade.

#include <atomic>
#include <mutex>
#include <utility>

#include "engine/EngineState.h"
#include "engine/Helpers.h"
#include "engine/ServiceAddress.h"
#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/conversation/ClientCalls.h"
#include "quorvix/conversation/QXChatEngineDelegate.h"
#include "quorvix/conversation/QXConversationMissingEntity.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/conversation/QXPersonalInfo.h"
#include "quorvix/conversation/QXTokenizer.h"
#include "quorvix/engine/Quorvix.h"

namespace quorvix {

namespace {

constexpr const char* kCreatePath = "/api/conversation/v1/create";
constexpr const char* kStatementPath = "/api/conversation/v1/statement";
constexpr const char* kFeedbackPath = "/api/conversation/v1/createFeedbackResponse";

std::string replaceAll(const std::string& text, const std::string& what, const std::string& with) {
  std::string result;
  std::size_t from = 0;
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, from)) {
    result.append(text, from, at - from).append(with);
    from = at + what.size();
  }
  result.append(text, from, std::string::npos);
  return result;
}

bool hasType(const QXResponse& response) {
  if (std::holds_alternative<std::monostate>(response.type())) return false;
  if (const auto* json = response.typeJson()) return !json->is_null();
  return true;
}

// What the chat delegate's missing-entity handler does: resend the statement
// with the host's entities, keeping the caller's completion.
QXMissingEntitiesHandler resendWithEntities(std::weak_ptr<Quorvix> weak, bool isPostback, std::string statement,
                                            QXConversationCompletion completion) {
  // The handler acts once, however often the host calls it.
  auto used = std::make_shared<std::atomic<bool>>(false);
  return [weak = std::move(weak), isPostback, statement = std::move(statement), completion = std::move(completion),
          used](std::shared_ptr<QXConversationMissingEntity> missing) {
    if (used->exchange(true)) return;
    auto self = weak.lock();
    if (!self) return;
    auto entities = missing ? missing->inJSON() : std::nullopt;
    self->sendMissingEntities(std::move(entities), isPostback, self->conversationId(), statement, completion);
  };
}

// Puts the reply to the chat delegate; without one the exchange ends here.
void askForEntities(const std::shared_ptr<Quorvix>& self, const std::shared_ptr<QXConversationalResponse>& reply,
                    QXMissingEntitiesHandler handler) {
  if (auto delegate = self->chatDelegate().lock()) delegate->shouldHandleMissingEntities(reply, std::move(handler));
}

// The road of statement and article answers: error, empty body, reply,
// validity, masking, missing entities (statement answers only), client calls.
void answerPipeline(const std::weak_ptr<Quorvix>& weak, const QXResponse& response, bool isPostback,
                    const std::string& statement, bool statementAnswer, const QXConversationCompletion& completion) {
  if (response.error()) {
    if (completion) completion(nullptr, response.error());
    return;
  }
  if (response.cacheParams().empty()) return;
  auto reply = QXConversationalResponse::initWithJSON(response.cacheParams());
  if (!reply || !reply->isValid()) {
    if (completion) completion(nullptr, errors::notValidResponse());
    return;
  }
  auto self = weak.lock();
  if (!self) return;
  if (auto text = reply->text(); text && !text->empty()) reply->setText(self->tokenizer()->decode(*text));
  if (statementAnswer && reply->missingEntities()) {
    askForEntities(self, reply, resendWithEntities(weak, isPostback, statement, completion));
    return;
  }
  self->callClientSelector(reply, completion);
}

// Resolves the personal-information placeholders of one reply, one after the
// other, through the chat delegate. A host that answers at once, on the
// asking thread, lets this loop go on instead of starting a nested one, so
// the stack does not grow with the number of placeholders.
class PlaceholderResolver : public std::enable_shared_from_this<PlaceholderResolver> {
 public:
  PlaceholderResolver(std::weak_ptr<Quorvix> engine, std::shared_ptr<QXConversationalResponse> response,
                      QXConversationCompletion completion)
      : engine_(std::move(engine)), response_(std::move(response)), completion_(std::move(completion)) {}

  void run() {
    for (;;) {
      auto text = response_ ? response_->text() : std::nullopt;
      auto signature = text ? extractSignature(*text) : std::nullopt;
      if (!signature) {
        if (completion_) completion_(response_, std::nullopt);
        return;
      }
      response_->setIsReadMore(false);
      auto info = QXPersonalInfo::initWithSignature(*signature);
      auto answered = std::make_shared<std::atomic<bool>>(false);
      info->setPersonalInfoCallback([self = shared_from_this(), answered, signature = *signature,
                                     id = info->personalInfoId(), arguments = info->methodArgs()](
                                        std::optional<std::string> value, std::shared_ptr<QXAction> action) {
        // The host answers once; a second call would deliver the reply twice.
        if (answered->exchange(true)) return;
        if (!self->apply(signature, id, arguments, std::move(value), std::move(action))) {
          if (self->completion_) self->completion_(self->response_, std::nullopt);
          return;
        }
        self->resume();
      });
      auto engine = engine_.lock();
      auto delegate = engine ? engine->chatDelegate().lock() : nullptr;
      if (!delegate) return;
      {
        std::lock_guard lock(mutex_);
        asking_ = true;
        answeredWhileAsking_ = false;
      }
      delegate->shouldHandlePersonalInformation(std::move(info));
      std::lock_guard lock(mutex_);
      asking_ = false;
      // Not answered yet: the answer, whenever it comes, goes on from there.
      if (!answeredWhileAsking_) return;
    }
  }

 private:
  // After a placeholder was resolved: the loop goes on, in the call that is
  // still asking when there is one, else here.
  void resume() {
    {
      std::lock_guard lock(mutex_);
      if (asking_) {
        answeredWhileAsking_ = true;
        return;
      }
    }
    if (engine_.lock()) run();
  }

  // Puts the host's answer in place of the placeholder; false when the
  // placeholder could not be taken out (an odd signature such as "a{{b", or a
  // value that brings it back), which would be asked for forever.
  bool apply(const std::string& signature, const std::string& id, const std::vector<std::string>& arguments,
             std::optional<std::string> value, std::shared_ptr<QXAction> action) {
    const std::string placeholder = "{{" + signature + "}}";
    if (!value && !action) {
      // No value: the placeholder becomes a button the host can offer.
      action = std::make_shared<QXAction>();
      action->setActionId(id);
      auto userInfo = args(arguments);
      if (userInfo) {
        if (const auto* label = userInfo->if_contains("ButtonText"); label != nullptr && label->is_string()) {
          action->setText(std::string(label->get_string()));
        }
      }
      action->setUserInfo(std::move(userInfo));
    }
    const std::string replacement = value.value_or(std::string());
    const std::string before = response_->text().value_or(std::string());
    response_->setText(replaceAll(before, placeholder, replacement));
    // A caption is what `text` shows: a placeholder left in it would be found
    // again on every pass, so it is resolved there too.
    if (auto* caption = response_->params().if_contains("answersCaption"); caption != nullptr && caption->is_string()) {
      *caption = replaceAll(std::string(caption->get_string()), placeholder, replacement);
    }
    response_->addAction(std::move(action));
    return before.find(placeholder) != std::string::npos &&
           response_->text().value_or(std::string()).find(placeholder) == std::string::npos;
  }

  std::weak_ptr<Quorvix> engine_;
  std::shared_ptr<QXConversationalResponse> response_;
  QXConversationCompletion completion_;
  std::mutex mutex_;
  bool asking_ = false;
  bool answeredWhileAsking_ = false;
};

}  // namespace

std::shared_ptr<QXTokenizer> Quorvix::tokenizer() {
  std::lock_guard lock(state_->mutex);
  if (!state_->tokenizer) state_->tokenizer = std::make_shared<QXTokenizer>();
  return state_->tokenizer;
}

void Quorvix::createConversationWithCompletion(QXCreateConversationCompletion completion) {
  auto params = accountParams();
  auto components = detail::serviceAddress(params, kCreatePath);
  if (!components) {
    if (completion) completion(std::nullopt, detail::addressError(params));
    return;
  }
  components->setQueryItems({{"kb", params->knowledgeBase()}, {"textOnly", "false"}});
  if (const auto& key = params->apiKey(); key && !key->empty()) components->appendQueryItem("apiKey", *key);
  QXConnection::openConnection(
      connectionHandler(), *components,
      [weak = weak_from_this(), completion = std::move(completion)](QXResponse response) {
        if (response.error()) {
          if (completion) completion(std::nullopt, response.error());
          return;
        }
        if (!hasType(response)) return;
        // The id arrives as a number; it is kept as its text.
        std::optional<std::string> id;
        if (const auto* answer = response.typeJson(); answer != nullptr && answer->is_object()) {
          if (const auto* value = answer->get_object().if_contains("id"); value != nullptr && !value->is_null()) {
            id = describe(*value);
          }
        }
        if (auto self = weak.lock()) self->setConversationId(id);
        if (completion) completion(id, std::nullopt);
      });
}

void Quorvix::createConversationWithEntities(std::vector<std::string> entities, bool textOnly,
                                             QXCreateConversationWithEntitiesCompletion completion) {
  auto configurationAddress = cnfComponent();
  if (!configurationAddress) {
    if (completion) completion(std::nullopt, detail::addressError(accountParams()));
    return;
  }
  QXConnection::openConnection(connectionHandler(), *configurationAddress,
                               [weak = weak_from_this(), entities = std::move(entities), textOnly,
                                completion = std::move(completion)](QXResponse response) {
                                 if (response.error()) {
                                   if (completion) completion(std::nullopt, response.error());
                                   return;
                                 }
                                 auto configuration = response.typeAs<QXConfiguration>();
                                 auto self = weak.lock();
                                 if (!configuration || !self) return;
                                 self->setConfiguration(configuration);
                                 auto params = self->accountParams();
                                 // The FAQ groups are chosen as the configuration fetch chooses them
                                 // (blocking reads on this transport thread); the host's configuration
                                 // callback is not called on this road.
                                 if (params && params->labelId()) {
                                   if (auto group = self->label())
                                     configuration->setFaqs(std::vector<std::shared_ptr<QXFAQGroup>>{group});
                                 } else if (!configuration->useLabels() && configuration->isContextDependent()) {
                                   const std::optional<Json> list = self->faqList();
                                   configuration->setFAQs(list ? &*list : nullptr);
                                 } else if (params && params->quorvixContext() && !params->apiKey()) {
                                   const std::optional<JsonArray> groups = self->faqGroup();
                                   const std::optional<Json> value =
                                       groups ? std::optional<Json>(*groups) : std::nullopt;
                                   configuration->setFAQs(value ? &*value : nullptr);
                                 }
                                 self->openConversationWithEntities(params, entities, textOnly, completion);
                               });
}

void Quorvix::openConversationWithEntities(const std::shared_ptr<AccountParams>& params,
                                           const std::vector<std::string>& entities, bool textOnly,
                                           const QXCreateConversationWithEntitiesCompletion& completion) {
  auto components = detail::serviceAddress(params, kCreatePath);
  setConversationId(std::nullopt);
  if (!components) {
    if (completion) completion(std::nullopt, detail::addressError(params));
    return;
  }
  std::string joined;
  for (const auto& entity : entities) joined += entity + ",";
  if (!joined.empty()) joined.pop_back();
  // "apiKey" is always sent here, without a value when the account has no key.
  components->setQueryItems({{"apiKey", params->apiKey()},
                             {"kb", params->knowledgeBase()},
                             {"account", params->account()},
                             {"textOnly", textOnly ? "true" : "false"},
                             {"touchpoint", "iOS"},
                             {"sdk", engineVersion()}});
  if (!joined.empty()) components->appendQueryItem("supportedEntities", joined);
  if (auto context = params->quorvixContext()) components->appendQueryItem("context", wrapped(*context));
  QXConnection::openConnection(connectionHandler(), *components, [completion](QXResponse response) {
    if (response.error()) {
      if (completion) completion(std::nullopt, response.error());
      return;
    }
    const auto* answer = response.typeJson();
    if (answer == nullptr || answer->is_null()) return;
    if (completion) completion(*answer, std::nullopt);
  });
  setIsPrepared(true);
}

void Quorvix::conversationStatement(std::string statement, bool type, std::optional<std::string> conversationId,
                                    QXConversationCompletion completion) {
  std::shared_ptr<AccountParams> params;
  std::optional<std::string> id;
  {
    std::lock_guard lock(state_->mutex);
    if (!state_->conversationId) state_->conversationId = std::move(conversationId);
    id = state_->conversationId;
    params = state_->accountParams;
  }
  auto components = detail::serviceAddress(params, kStatementPath);
  if (!components) {
    if (completion) completion(nullptr, detail::addressError(params));
    return;
  }
  // A postback goes as the bot sent it; a statement gets its tokens restored,
  // and is logged as written, with the tokens.
  URLComponents logged = *components;
  logged.setQueryItems({{type ? "postback" : "statement", statement}, {"id", id}});
  std::string value = type ? statement : tokenizer()->encode(statement);
  components->setQueryItems({{type ? "postback" : "statement", std::move(value)}, {"id", std::move(id)}});
  QXConnection::openConnection(
      connectionHandler(), *components, logged,
      [weak = weak_from_this(), type, statement = std::move(statement), completion = std::move(completion)](
          QXResponse response) { answerPipeline(weak, response, type, statement, true, completion); });
}

void Quorvix::conversationArticle(std::string articleId, std::optional<std::string> conversationId,
                                  QXConversationCompletion completion) {
  std::shared_ptr<AccountParams> params;
  std::optional<std::string> id;
  {
    std::lock_guard lock(state_->mutex);
    if (!state_->conversationId) state_->conversationId = std::move(conversationId);
    id = state_->conversationId;
    params = state_->accountParams;
  }
  auto components = detail::serviceAddress(params, kStatementPath);
  if (!components) {
    if (completion) completion(nullptr, detail::addressError(params));
    return;
  }
  components->setQueryItems({{"articleId", std::move(articleId)}, {"id", std::move(id)}});
  QXConnection::openConnection(connectionHandler(), *components,
                               [weak = weak_from_this(), completion = std::move(completion)](QXResponse response) {
                                 answerPipeline(weak, response, false, std::string(), false, completion);
                               });
}

void Quorvix::sendMissingEntities(std::optional<std::string> entities, bool isPostback,
                                  std::optional<std::string> conversationId, std::string statement,
                                  QXConversationCompletion completion) {
  std::shared_ptr<AccountParams> params;
  std::optional<std::string> id;
  {
    std::lock_guard lock(state_->mutex);
    if (!state_->conversationId) state_->conversationId = std::move(conversationId);
    id = state_->conversationId;
    params = state_->accountParams;
  }
  auto components = detail::serviceAddress(params, kStatementPath);
  if (!components) {
    if (completion) completion(nullptr, detail::addressError(params));
    return;
  }
  components->setQueryItems(
      {{isPostback ? "postback" : "statement", statement}, {"entities", std::move(entities)}, {"id", std::move(id)}});
  QXConnection::openConnection(
      connectionHandler(), *components,
      [weak = weak_from_this(), statement = std::move(statement),
       completion = std::move(completion)](QXResponse response) {
        if (response.error()) {
          if (completion) completion(nullptr, response.error());
          return;
        }
        if (!hasType(response) || response.cacheParams().empty()) return;
        auto self = weak.lock();
        if (!self) return;
        // The whole answer is masked here, not only its text.
        auto reply = QXConversationalResponse::initWithJSON(self->tokenizer()->decode(response.cacheParams()));
        if (reply->missingEntities()) {
          // Whatever the first statement was, a further resend goes as a statement.
          askForEntities(self, reply, resendWithEntities(weak, false, statement, completion));
          return;
        }
        self->callClientSelector(reply, completion);
      });
}

void Quorvix::callClientSelector(std::shared_ptr<QXConversationalResponse> response,
                                 QXConversationCompletion completion) {
  if (!response) {
    if (completion) completion(nullptr, std::nullopt);
    return;
  }
  if (response->missingEntities()) {
    if (completion) completion(response, std::nullopt);
    return;
  }
  extractPrivateInfo(std::move(response), std::move(completion));
}

void Quorvix::extractPrivateInfo(std::shared_ptr<QXConversationalResponse> response,
                                 QXConversationCompletion completion) {
  std::make_shared<PlaceholderResolver>(weak_from_this(), std::move(response), std::move(completion))->run();
}

void Quorvix::sendConversationFeedbackWithCompletion(QXConversationFeedbackCompletion completion) {
  auto id = conversationId();
  auto components = id ? detail::serviceAddress(accountParams(), kFeedbackPath) : std::nullopt;
  if (!components) {
    if (completion) completion(nullptr);
    return;
  }
  components->setQueryItems({{"id", std::move(id)}});
  QXConnection::openConnection(connectionHandler(), *components,
                               [completion = std::move(completion)](QXResponse response) {
                                 if (completion) completion(response.typeAs<QXConversationalResponse>());
                               });
}

}  // namespace quorvix
