// The C API's bot conversation: exchanges, and the host's answers to the bot's questions.

#include <boost/json/serialize.hpp>

#include "capi/ChatBridge.h"
#include "capi/Operations.h"
#include "json/ModelJson.h"
#include "quorvix/conversation/QXConversationMissingEntity.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/conversation/QXEntity.h"
#include "quorvix/conversation/QXPersonalInfo.h"

namespace quorvix::capi {
namespace {

/// The completion of an exchange: the reply's document, or the error.
QXConversationCompletion exchange(std::shared_ptr<Callback> callback) {
  return [callback](std::shared_ptr<QXConversationalResponse> response, std::optional<QXError> error) {
    if (error) {
      callback->fail(*error);
    } else {
      callback->succeed(documents::exchangeDocument(response));
    }
  };
}

/// Keeps the id of a conversation this handle opened, and tells the host.
void opened(const std::shared_ptr<EngineState>& state, const std::shared_ptr<Callback>& callback,
            std::optional<std::string> id, const std::optional<QXError>& error) {
  if (error) {
    callback->fail(*error);
    return;
  }
  {
    std::lock_guard lock(state->mutex);
    state->conversationId = id;
  }
  callback->succeed(documents::conversationDocument(id));
}

std::optional<std::string> conversationOf(EngineState& state) {
  std::lock_guard lock(state.mutex);
  return state.conversationId;
}

}  // namespace

void ChatBridge::shouldHandleMissingEntities(std::shared_ptr<QXConversationalResponse> response,
                                             QXMissingEntitiesHandler missingEntitiesHandler) {
  // Without a host function the handler is dropped, and with it the exchange's callback.
  if (handler_.missing_entities == nullptr || !response) return;
  auto* request = new qx_request{std::move(missingEntitiesHandler), response->statement(), nullptr};
  const std::string json = boost::json::serialize(documents::replyJson(*response));
  deliver([handler = handler_, request, json] { handler.missing_entities(handler.context, json.c_str(), request); });
}

bool ChatBridge::shouldHandlePersonalInformation(std::shared_ptr<QXPersonalInfo> personalInfo) {
  if (handler_.personal_information == nullptr || !personalInfo) return false;
  JsonArray arguments;
  for (const auto& argument : personalInfo->methodArgs()) arguments.emplace_back(argument);
  const std::string json = boost::json::serialize(JsonObject{{"signature", personalInfo->signature()},
                                                             {"personalInfoId", personalInfo->personalInfoId()},
                                                             {"methodArgs", std::move(arguments)}});
  auto* request = new qx_request{{}, std::nullopt, std::move(personalInfo)};
  deliver([handler = handler_, request, json] {
    handler.personal_information(handler.context, json.c_str(), request);
  });
  return true;
}

}  // namespace quorvix::capi

using namespace quorvix;
using namespace quorvix::capi;

extern "C" {

QX_API void qx_set_chat_handler(qx_engine* engine, const qx_chat_handler* handler) {
  if (engine == nullptr) return;
  guarded("qx_set_chat_handler", [&] {
    std::shared_ptr<ChatBridge> bridge = handler ? std::make_shared<ChatBridge>(*handler) : nullptr;
    {
      std::lock_guard lock(engine->state->mutex);
      engine->state->chat = bridge;  // the engine holds its delegate weakly
    }
    engine->engine->setChatDelegate(bridge);
  });
}

QX_API void qx_conversation_create(qx_engine* engine, qx_callback callback, void* context) {
  run("qx_conversation_create", engine, callback, context, [](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    handle.engine->createConversationWithCompletion(
        [cb, state = handle.state](std::optional<std::string> id, std::optional<QXError> error) {
          opened(state, cb, std::move(id), error);
        });
  });
}

QX_API void qx_conversation_create_with_entities(qx_engine* engine, const char* entities_json, int text_only,
                                                 qx_callback callback, void* context) {
  run("qx_conversation_create_with_entities", engine, callback, context,
      [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
        const auto parsed = parse(entities_json);
        if (!parsed || !parsed->is_array()) {
          cb->fail(makeError(QX_ERROR_INVALID_ARGUMENT, "the entities are not a JSON array"));
          return;
        }
        std::vector<std::string> entities;
        for (const Json& entry : parsed->get_array()) {
          if (!entry.is_string()) {
            cb->fail(makeError(QX_ERROR_INVALID_ARGUMENT, "the entities are names (strings)"));
            return;
          }
          entities.emplace_back(entry.get_string());
        }
        handle.engine->createConversationWithEntities(
            std::move(entities), text_only != 0,
            [cb, state = handle.state](std::optional<Json> answer, std::optional<QXError> error) {
              std::optional<std::string> id;
              if (answer && answer->is_object()) {
                if (const Json* value = answer->get_object().if_contains("id"); value && !value->is_null()) {
                  id = value->is_string() ? std::string(value->get_string()) : boost::json::serialize(*value);
                }
              }
              opened(state, cb, std::move(id), error);
            });
      });
}

QX_API void qx_conversation_statement(qx_engine* engine, const char* text, qx_callback callback, void* context) {
  run("qx_conversation_statement", engine, callback, context,
      [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
        if (!require(text, "the statement", *cb)) return;
        // Sent as {"text": ...}, so that tokens in what the user typed are restored.
        handle.engine->conversationStatement(boost::json::serialize(JsonObject{{"text", text}}), false,
                                             conversationOf(*handle.state), exchange(cb));
      });
}

QX_API void qx_conversation_postback(qx_engine* engine, const char* payload, qx_callback callback, void* context) {
  run("qx_conversation_postback", engine, callback, context,
      [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
        if (!require(payload, "the postback", *cb)) return;
        handle.engine->conversationStatement(payload, true, conversationOf(*handle.state), exchange(cb));
      });
}

QX_API void qx_conversation_article(qx_engine* engine, const char* article_id, qx_callback callback, void* context) {
  run("qx_conversation_article", engine, callback, context,
      [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
        if (!require(article_id, "the article id", *cb)) return;
        handle.engine->conversationArticle(article_id, conversationOf(*handle.state), exchange(cb));
      });
}

QX_API void qx_conversation_send_entities(qx_engine* engine, const char* entities_json, int is_postback,
                                          const char* statement, qx_callback callback, void* context) {
  run("qx_conversation_send_entities", engine, callback, context,
      [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
        if (!require(statement, "the statement", *cb)) return;
        const auto parsed = parse(entities_json);
        if (!parsed || !parsed->is_array()) {
          cb->fail(makeError(QX_ERROR_INVALID_ARGUMENT, "the entities are not a JSON array"));
          return;
        }
        handle.engine->sendMissingEntities(boost::json::serialize(*parsed), is_postback != 0,
                                           conversationOf(*handle.state), statement, exchange(cb));
      });
}

QX_API void qx_conversation_feedback(qx_engine* engine, qx_callback callback, void* context) {
  run("qx_conversation_feedback", engine, callback, context,
      [](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
        handle.engine->sendConversationFeedbackWithCompletion([cb](std::shared_ptr<QXConversationalResponse> reply) {
          cb->succeed(documents::exchangeDocument(reply));
        });
      });
}

QX_API qx_error* qx_answer_missing_entities(qx_request* request, const char* entities_json) {
  if (request == nullptr) return newError(makeError(QX_ERROR_INVALID_ARGUMENT, "no request"));
  qx_error* refused = nullptr;
  guarded("qx_answer_missing_entities", [&] {
    const auto parsed = parse(entities_json);
    if (!parsed || !parsed->is_array() || !request->entities) {
      refused = newError(makeError(QX_ERROR_INVALID_ARGUMENT, "the entities are not a JSON array of objects"));
      return;
    }
    auto missing = QXConversationMissingEntity::initWithStatement(request->statement);
    for (const Json& entry : parsed->get_array()) {
      if (!entry.is_object()) {
        refused = newError(makeError(QX_ERROR_INVALID_ARGUMENT, "the entities are not a JSON array of objects"));
        return;
      }
      missing->addEntity(QXEntity::initWithParams(&entry.get_object()));
    }
    request->entities(missing);
  });
  delete request;
  return refused;
}

QX_API void qx_answer_personal_information(qx_request* request, const char* value) {
  if (request == nullptr) return;
  guarded("qx_answer_personal_information", [&] {
    if (request->info && request->info->personalInfoCallback()) {
      request->info->personalInfoCallback()(optionalText(value), nullptr);
    }
  });
  delete request;
}

QX_API void qx_request_free(qx_request* request) { delete request; }

}  // extern "C"
