// The C API's operations on an engine: session, configuration, FAQ, answers,
// likes, search, suggestions, contexts and channels.

#include <boost/json/serialize.hpp>

#include "capi/Operations.h"
#include "json/ModelJson.h"
#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/faq/FAQAnswer.h"
#include "quorvix/faq/QXCacheManager.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/faq/QXLikeStateHandler.h"
#include "quorvix/search/QXAutoCompleteResponse.h"
#include "quorvix/search/QXQueryResult.h"
#include "quorvix/search/QXSearchResponse.h"
#include "quorvix/search/SearchAnswer.h"

namespace quorvix::capi {
namespace {

using ChannelList = std::vector<std::shared_ptr<QXChanneling>>;

/// When a request is dropped, the session error (when there is one) says why.
void explainWithSessionError(Callback& callback, const std::shared_ptr<Quorvix>& engine) {
  callback.setAbandonReason([weak = std::weak_ptr<Quorvix>(engine)]() -> std::optional<QXError> {
    auto strong = weak.lock();
    return strong ? strong->sessionError() : std::nullopt;
  });
}

/// Asks for the configuration and hands it (or the error) to `then`, on the
/// thread the configuration arrives on.
void withConfiguration(qx_engine& handle, const std::shared_ptr<Callback>& callback,
                       std::function<void(const std::shared_ptr<QXConfiguration>&)> then) {
  const auto& engine = handle.engine;
  if (!engine->accountParams()) {
    callback->fail(makeError(QX_ERROR_INVALID_ARGUMENT, "prepare the engine with an account first"));
    return;
  }
  // Shares the preparation's fetch when it is still under way; starts one
  // when it already failed.
  engine->whenConfigured(
      [callback, then = std::move(then)](std::shared_ptr<QXConfiguration> configuration, std::optional<QXError> error) {
        if (!failedWithout(*callback, configuration, error)) then(configuration);
      });
}

void remember(EngineState& state, const std::string& id, const std::shared_ptr<QXQueryResult>& article) {
  std::lock_guard lock(state.mutex);
  state.articles[id] = article;
}

}  // namespace
}  // namespace quorvix::capi

using namespace quorvix;
using namespace quorvix::capi;

extern "C" {

QX_API void qx_start_session(qx_engine* engine, qx_callback callback, void* context) {
  run("qx_start_session", engine, callback, context, [](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    explainWithSessionError(*cb, handle.engine);
    handle.engine->startSession([cb, weak = std::weak_ptr<Quorvix>(handle.engine)] {
      if (auto engine = weak.lock()) cb->succeed(documents::sessionDocument(engine->sessionId(), engine->delay()));
    });
  });
}

QX_API void qx_configuration(qx_engine* engine, qx_callback callback, void* context) {
  run("qx_configuration", engine, callback, context, [](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    withConfiguration(handle, cb, [cb](const std::shared_ptr<QXConfiguration>& configuration) {
      cb->succeed(documents::configurationJson(*configuration));
    });
  });
}

QX_API void qx_labels(qx_engine* engine, qx_callback callback, void* context) {
  run("qx_labels", engine, callback, context, [](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    // The labels request names the configuration's knowledge base: it waits for it.
    withConfiguration(handle, cb, [cb, weak = std::weak_ptr<Quorvix>(handle.engine)](const auto&) {
      auto engine = weak.lock();
      if (!engine) return;
      if (auto labels = engine->labels()) {
        cb->succeed(documents::labelsDocument(*labels));
      } else {
        cb->fail(makeError(QX_ERROR_NO_RESULT, "the labels could not be read (the log says why)"));
      }
    });
  });
}

QX_API void qx_faq_list(qx_engine* engine, qx_callback callback, void* context) {
  run("qx_faq_list", engine, callback, context, [](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    handle.engine->fetchFAQList([cb](QXResponse response) {
      if (response.error()) {
        cb->fail(*response.error());
      } else if (const Json* list = response.typeJson(); list && list->is_array()) {
        cb->succeed(documents::faqListDocument(*list));
      } else {
        cb->fail(errors::notValidResponse());
      }
    });
  });
}

QX_API void qx_label_faq(qx_engine* engine, const char* label_id, qx_callback callback, void* context) {
  run("qx_label_faq", engine, callback, context, [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    if (!require(label_id, "the label id", *cb)) return;
    auto label = std::make_shared<QXLabel>();
    label->setLabelId(label_id);
    handle.engine->faqForLabel(
        label, [cb, id = std::string(label_id)](std::optional<std::vector<std::shared_ptr<QXQueryResult>>> answers) {
          if (answers) {
            cb->succeed(documents::labelFaqDocument(id, *answers));
          } else {
            // The engine reports a failed request as no answers, without an error.
            cb->fail(makeError(QX_ERROR_NO_RESULT, "the label's FAQ group could not be read"));
          }
        });
  });
}

QX_API void qx_answer(qx_engine* engine, const char* answer_id, const char* hash, qx_callback callback,
                      void* context) {
  run("qx_answer", engine, callback, context, [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    if (!require(answer_id, "the answer id", *cb)) return;
    handle.engine->fetchFAQAnswer(
        answer_id, optionalText(hash),
        [cb, state = handle.state, id = std::string(answer_id)](std::shared_ptr<FAQAnswer> answer,
                                                                std::optional<QXError> error) {
          if (failedWithout(*cb, answer, error)) return;
          remember(*state, id, answer);
          cb->succeed(documents::queryResultJson(*answer));
        });
  });
}

QX_API qx_error* qx_store_answer(const char* answer_id, const char* answer_json) {
  qx_error* refused = nullptr;
  guarded("qx_store_answer", [&] {
    const auto parsed = parse(answer_json);
    if (answer_id == nullptr || !parsed || !parsed->is_object()) {
      refused = newError(makeError(QX_ERROR_INVALID_ARGUMENT, "an answer is stored as a JSON object under an id"));
    } else if (!QXCacheManager::storeAnswerById(answer_id, boost::json::serialize(*parsed))) {
      refused = newError(makeError(QX_ERROR_INVALID_ARGUMENT,
                                   std::string("the answer store refused the id \"") + answer_id + "\""));
    }
  });
  return refused;
}

QX_API void qx_like(qx_engine* engine, const char* result_id, int action, const char* reason, qx_callback callback,
                    void* context) {
  run("qx_like", engine, callback, context, [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    if (!require(result_id, "the result id", *cb)) return;
    auto result = std::make_shared<QXQueryResult>();
    result->setResultId(result_id);
    if (reason) result->setDislikeText(reason);
    handle.engine->like(action, result, [cb](std::optional<std::string> id, int32_t code, bool success) {
      cb->succeed(documents::likeDocument(id, code, success));
    });
  });
}

QX_API void qx_set_like_state(qx_engine* engine, const char* result_id, int liked) {
  if (engine == nullptr || result_id == nullptr) return;
  guarded("qx_set_like_state", [&] { engine->engine->likeState()->updateLikeState(liked != 0, result_id); });
}

QX_API int qx_like_state(qx_engine* engine, const char* result_id) {
  int state = -1;
  if (engine == nullptr || result_id == nullptr) return state;
  guarded("qx_like_state", [&] {
    if (auto vote = engine->engine->likeState()->likeStateWithId(result_id)) state = *vote ? 1 : 0;
  });
  return state;
}

QX_API void qx_search(qx_engine* engine, const char* text, qx_callback callback, void* context) {
  run("qx_search", engine, callback, context, [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    if (!require(text, "the search text", *cb)) return;
    explainWithSessionError(*cb, handle.engine);
    handle.engine->searchText(
        std::string(text), [cb, state = handle.state](std::shared_ptr<QXSearchResponse> response,
                                                      std::optional<QXError> error) {
          if (failedWithout(*cb, response, error)) return;
          {
            std::lock_guard lock(state->mutex);
            state->latestHits.clear();
            for (const auto& hit : response->answerList()) {
              if (hit && hit->resultId()) state->latestHits[*hit->resultId()] = hit;
            }
          }
          cb->succeed(documents::searchResponseJson(*response));
        });
  });
}

QX_API void qx_suggest(qx_engine* engine, const char* text, qx_callback callback, void* context) {
  run("qx_suggest", engine, callback, context, [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    if (!require(text, "the typed text", *cb)) return;
    explainWithSessionError(*cb, handle.engine);
    handle.engine->suggestionsForText(
        std::string(text), [cb, weak = std::weak_ptr<Quorvix>(handle.engine)](
                               std::shared_ptr<QXAutoCompleteResponse> response, std::optional<QXError> error) {
          auto engine = weak.lock();
          if (failedWithout(*cb, response && engine, error)) return;
          // Styled with this engine's autocomplete settings (the defaults before a configuration).
          auto settings = engine->configuration()->autoComplete();
          const auto styled = settings ? response->suggestions(*settings) : response->suggestions(QXAutoCompleteConfiguration());
          cb->succeed(documents::suggestionsDocument(*response, styled));
        });
  });
}

QX_API void qx_contexts(qx_engine* engine, const char* names, qx_callback callback, void* context) {
  run("qx_contexts", engine, callback, context, [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    if (!require(names, "the context names", *cb)) return;
    explainWithSessionError(*cb, handle.engine);
    handle.engine->contextValue(names, [cb, asked = std::string(names)](std::optional<Json> reply,
                                                                        std::optional<QXError> error) {
      if (error) {
        cb->fail(*error);
      } else {
        cb->succeed(documents::contextsDocument(asked, reply.value_or(nullptr)));
      }
    });
  });
}

QX_API void qx_change_context(qx_engine* engine, const char* json_object, qx_callback callback, void* context) {
  run("qx_change_context", engine, callback, context, [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    const auto parsed = parse(json_object);
    if (!parsed || !parsed->is_object() || parsed->get_object().empty()) {
      cb->fail(makeError(QX_ERROR_INVALID_ARGUMENT, "the context is not a JSON object with an entry"));
      return;
    }
    const auto& first = *parsed->get_object().begin();
    explainWithSessionError(*cb, handle.engine);
    handle.engine->changeContext(parsed->get_object(), [cb, name = std::string(first.key()), value = first.value()](
                                                           bool accepted, std::optional<QXError> error) {
      if (error) {
        cb->fail(*error);
      } else {
        cb->succeed(documents::changeContextDocument(name, value, accepted));
      }
    });
  });
}

QX_API void qx_channels(qx_engine* engine, const char* article_id, int like_state, const char* channel_context,
                        qx_callback callback, void* context) {
  run("qx_channels", engine, callback, context, [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    if (!require(article_id, "the article id", *cb)) return;
    std::shared_ptr<QXQueryResult> article;
    {
      std::lock_guard lock(handle.state->mutex);
      if (auto known = handle.state->articles.find(article_id); known != handle.state->articles.end()) {
        article = known->second;
      }
    }
    if (!article) {
      article = std::make_shared<QXQueryResult>();
      article->setResultId(article_id);
    }
    article->setLikeState(like_state);
    handle.engine->channels(article, optionalText(channel_context),
                            [cb, state = handle.state, article, id = std::string(article_id)](
                                std::optional<ChannelList> channels, std::optional<QXError> error) {
                              if (error) {
                                cb->fail(*error);
                                return;
                              }
                              article->setChanneling(channels.value_or(ChannelList{}));
                              remember(*state, id, article);
                              cb->succeed(documents::channelsDocument(id, article->channeling()));
                            });
  });
}

QX_API void qx_report_channel(qx_engine* engine, const char* article_id, size_t channel_index, qx_callback callback,
                              void* context) {
  run("qx_report_channel", engine, callback, context, [&](qx_engine& handle, const std::shared_ptr<Callback>& cb) {
    if (!require(article_id, "the article id", *cb)) return;
    std::shared_ptr<QXQueryResult> article;
    bool escalation = false;
    {
      std::lock_guard lock(handle.state->mutex);
      if (auto hit = handle.state->latestHits.find(article_id); hit != handle.state->latestHits.end()) {
        article = hit->second;
        escalation = true;
      } else if (auto known = handle.state->articles.find(article_id); known != handle.state->articles.end()) {
        article = known->second;
      }
    }
    if (!article) {
      cb->fail(makeError(QX_ERROR_NOT_FOUND, std::string("no article ") + article_id +
                                                 " in the latest search or the answers of this engine handle"));
      return;
    }
    const ChannelList channels = article->channeling();
    if (channel_index >= channels.size()) {
      cb->fail(makeError(QX_ERROR_INVALID_ARGUMENT, std::string("article ") + article_id + " has " +
                                                        std::to_string(channels.size()) + " channels; there is no channel " +
                                                        std::to_string(channel_index)));
      return;
    }
    handle.engine->reportChanneling(channels[channel_index], article);
    cb->succeed(documents::reportDocument(article_id, escalation, *channels[channel_index]));
  });
}

QX_API qx_error* qx_track_event(qx_engine* engine, const char* event_json) {
  qx_error* refused = nullptr;
  guarded("qx_track_event", [&] {
    const auto parsed = parse(event_json);
    if (engine == nullptr || !parsed || !parsed->is_object()) {
      refused = newError(makeError(QX_ERROR_INVALID_ARGUMENT, "an event is a JSON object"));
      return;
    }
    engine->engine->trackEvent(parsed->get_object());
  });
  return refused;
}

}  // extern "C"
