/**
 * @file
 * The engine's C API: what a Swift, Kotlin, Python or C host links
 * (`libquorvix.so`). C11; every name starts with `qx_`.
 *
 * Handles are opaque: a `qx_engine` is one engine, a `qx_account` the account
 * parameters it is prepared with. Strings are UTF-8 and NUL-terminated; every
 * string the host passes is copied before the call returns.
 *
 * Results arrive as JSON documents in the shape the `quorvix` tool prints with
 * `--json` (docs/json-models.md describes each one). An asynchronous operation
 * takes a `qx_callback` and a `void *context` and calls the callback exactly
 * once: with a document and no error, or with no document and an error. An
 * operation the engine drops without an answer (a session that cannot start,
 * a configuration request replaced by a new preparation, an engine freed with
 * the request in flight) is reported as the error `QX_ERROR_DOMAIN`
 * `QX_ERROR_ABANDONED`. The strings a callback receives live until it returns.
 *
 * Every callback, and every question the engine puts to the host, runs on the
 * executor (`qx_set_executor`; by default one serial thread the engine owns),
 * never on the caller's stack. Every function may be called from any thread.
 * No C++ exception crosses this interface.
 */
#ifndef QUORVIX_C_QUORVIX_H
#define QUORVIX_C_QUORVIX_H

#include <stddef.h>

#include "quorvix/Version.h"

#if defined(QX_BUILDING_LIBRARY)
/** Marks a function the shared library exports. */
#define QX_API __attribute__((visibility("default")))
#else
/** Marks a function the shared library exports. */
#define QX_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** The error domain of the errors this interface makes itself. */
#define QX_ERROR_DOMAIN "com.quorvix.c"
/** The engine dropped the request without an answer; see the error's user information. */
#define QX_ERROR_ABANDONED 1
/** An argument was missing or malformed (for instance JSON that does not parse). */
#define QX_ERROR_INVALID_ARGUMENT 2
/** The engine answered with nothing and no reason (for instance a label's FAQ that could not be read). */
#define QX_ERROR_NO_RESULT 3
/** The operation needs something this engine handle does not hold (such as a search hit). */
#define QX_ERROR_NOT_FOUND 4

/** An engine. Made by `qx_engine_new` or `qx_engine_shared`, released by `qx_engine_free`. */
typedef struct qx_engine qx_engine;
/** Account parameters. Made by `qx_account_new`, released by `qx_account_free`. */
typedef struct qx_account qx_account;
/** A question of the bot the host answers once (`qx_answer_missing_entities`, `qx_answer_personal_information`). */
typedef struct qx_request qx_request;
/** A unit of work the engine hands to the host's executor; run it once with `qx_task_run`. */
typedef struct qx_task qx_task;

/** Why an operation failed: the engine's error in its own terms. */
typedef struct qx_error {
  /** The error domain, such as "com.quorvix.engine" or `QX_ERROR_DOMAIN`. */
  const char *domain;
  /** The code within the domain (an HTTP status, a transport code, ...). */
  long code;
  /** The user information as a JSON object of strings (for instance "Description", "url"). */
  const char *user_info_json;
  /** The whole error as the tool prints it: {"error": {"domain", "code", "userInfo"}}. */
  const char *json;
} qx_error;

/**
 * Receives the outcome of an asynchronous operation, exactly once: `json` is
 * the result document and `error` NULL, or `json` is NULL and `error` says why.
 * Both live until the callback returns.
 */
typedef void (*qx_callback)(void *context, const char *json, const qx_error *error);

/** Receives one log line of the engine, secrets already replaced by "***". */
typedef void (*qx_log_fn)(void *context, const char *line);

/** Receives the connection layer's notifications: {"event": "failed"} or {"event": "recovered"}. */
typedef void (*qx_notification_fn)(void *context, const char *json);

/** The host's executor: `post` queues the task, which the host later runs once with `qx_task_run`. */
typedef struct qx_executor {
  /** Passed back to `post`. */
  void *context;
  /** Queues the task; must not run it on the caller's stack. */
  void (*post)(void *context, qx_task *task);
} qx_executor;

/** The host's side of a bot conversation. Unset members mean the host does not take part. */
typedef struct qx_chat_handler {
  /** Passed back to both members. */
  void *context;
  /**
   * The bot's reply (`reply_json`, a reply document whose "missingEntities"
   * holds the question) asks for entities the statement lacked. Answer once
   * with `qx_answer_missing_entities`; the statement's callback then receives
   * the reply to that answer. Unset: the exchange ends as abandoned.
   */
  void (*missing_entities)(void *context, const char *reply_json, qx_request *request);
  /**
   * A reply holds a personal-information placeholder: `info_json` is
   * {"signature", "personalInfoId", "methodArgs": [...]}. Answer once with
   * `qx_answer_personal_information`. Unset: replies with placeholders are
   * never delivered (their callbacks end as abandoned when dropped).
   */
  void (*personal_information)(void *context, const char *info_json, qx_request *request);
} qx_chat_handler;

/* --- version ----------------------------------------------------------- */

/** The library's version, "MAJOR.MINOR.PATCH". */
QX_API const char *qx_version(void);
/** The API version the library was built with; compare with `QX_API_VERSION`. */
QX_API int qx_api_version(void);

/* --- errors and tasks ---------------------------------------------------- */

/** Releases an error a synchronous function returned; NULL is ignored. */
QX_API void qx_error_free(qx_error *error);
/** Runs a task the executor received, once, and releases it. */
QX_API void qx_task_run(qx_task *task);
/** Releases a task without running it (an executor shutting down). Its callback then never runs. */
QX_API void qx_task_free(qx_task *task);

/* --- process-wide seams ------------------------------------------------- */

/** Installs the host's executor (copied); NULL restores the default serial thread. */
QX_API void qx_set_executor(const qx_executor *executor);
/** Sends every log line to `sink`; NULL restores the default (stderr). */
QX_API void qx_set_log_sink(qx_log_fn sink, void *context);
/** Receives the connection layer's network-loss and recovery notifications; NULL stops them. */
QX_API void qx_set_error_listener(qx_notification_fn listener, void *context);
/** The bundle identifier and build number the engine reports for the host application. */
QX_API void qx_set_host_info(const char *bundle_identifier, const char *build_number);
/**
 * Points the engine at a service base: "https://HOST[:PORT]" or, for
 * development, "http://localhost:PORT" (loopback hosts only). NULL restores
 * the production hosts. Returns NULL, or the reason it was refused (release
 * it with `qx_error_free`).
 */
QX_API qx_error *qx_set_service(const char *base_url);
/** The folder under which the answer store lives; NULL restores the default. */
QX_API void qx_set_storage_root(const char *path);
/** Trusts the certificate authorities of a PEM file instead of the system store; NULL restores the system store. */
QX_API void qx_set_ca_file(const char *path);

/* --- account ------------------------------------------------------------ */

/** New, empty account parameters. */
QX_API qx_account *qx_account_new(void);
/** Releases account parameters; an engine prepared with them keeps its own reference. NULL is ignored. */
QX_API void qx_account_free(qx_account *account);
/** The account name (a host label). NULL clears it. */
QX_API void qx_account_set_account(qx_account *account, const char *value);
/** The knowledge base. NULL clears it. */
QX_API void qx_account_set_knowledge_base(qx_account *account, const char *value);
/** The API key. NULL clears it. */
QX_API void qx_account_set_api_key(qx_account *account, const char *value);
/** The server name. NULL clears it. */
QX_API void qx_account_set_server(qx_account *account, const char *value);
/** The label. NULL clears it. */
QX_API void qx_account_set_label_id(qx_account *account, const char *value);
/** The referrer. NULL clears it. */
QX_API void qx_account_set_referrer(qx_account *account, const char *value);
/** Whether every context is mandatory (non-zero: yes). */
QX_API void qx_account_set_all_contexts_mandatory(qx_account *account, int value);
/** The static context, a JSON object of strings; NULL clears it. Returns NULL or why it was refused. */
QX_API qx_error *qx_account_set_context(qx_account *account, const char *json_object);

/* --- engine ------------------------------------------------------------- */

/** A new, independent engine. */
QX_API qx_engine *qx_engine_new(void);
/** A handle on the process-wide engine (each call a new handle to free). */
QX_API qx_engine *qx_engine_shared(void);
/**
 * Releases a handle. The engine stops when its last handle goes; callbacks
 * still pending end as abandoned. Do not call it from inside a callback of
 * the same handle. NULL is ignored.
 */
QX_API void qx_engine_free(qx_engine *engine);
/** Prepares the engine for an account: drops its configuration; the next requests use these parameters. */
QX_API void qx_prepare(qx_engine *engine, const qx_account *account);
/** Cancels the keep-alive, empties the suggestion cache and drops the session. */
QX_API void qx_stop(qx_engine *engine);
/** Installs the host's side of the bot conversation (copied); NULL removes it. */
QX_API void qx_set_chat_handler(qx_engine *engine, const qx_chat_handler *handler);

/* --- session, configuration and FAQ --------------------------------------- */

/** Opens a session: {"sessionId", "delay"}. A start that fails ends as abandoned, with the session error. */
QX_API void qx_start_session(qx_engine *engine, qx_callback callback, void *context);
/**
 * The widget configuration, once the engine is prepared. Calls made while the
 * preparation's fetch is under way share it; after a failed fetch a call starts
 * a new one. A reply that is not a configuration ends with an error.
 */
QX_API void qx_configuration(qx_engine *engine, qx_callback callback, void *context);
/** The FAQ list: {"groups": [...]}. */
QX_API void qx_faq_list(qx_engine *engine, qx_callback callback, void *context);
/** The user's labels, once the configuration has arrived: {"labels": ...}. */
QX_API void qx_labels(qx_engine *engine, qx_callback callback, void *context);
/** The FAQ group of a label: {"labelId", "answers": [...]}. */
QX_API void qx_label_faq(qx_engine *engine, const char *label_id, qx_callback callback, void *context);
/** One answer, from the answer store when it is there: {"resultId", "title", "body", ...}. `hash` may be NULL. */
QX_API void qx_answer(qx_engine *engine, const char *answer_id, const char *hash, qx_callback callback, void *context);
/** Stores an answer dictionary (JSON object text) in the answer store under `answer_id`. Returns NULL or why not. */
QX_API qx_error *qx_store_answer(const char *answer_id, const char *answer_json);
/** Reports a like or dislike: {"resultId", "action", "success"}. `reason` (the dislike text) may be NULL. */
QX_API void qx_like(qx_engine *engine, const char *result_id, int action, const char *reason, qx_callback callback,
                    void *context);
/** Remembers the user's vote for a result (non-zero: liked). */
QX_API void qx_set_like_state(qx_engine *engine, const char *result_id, int liked);
/** The vote remembered for a result: 1 liked, 0 disliked, -1 none. */
QX_API int qx_like_state(qx_engine *engine, const char *result_id);

/* --- search, contexts and channels ------------------------------------------ */

/** Searches the knowledge base: the search reply document. */
QX_API void qx_search(qx_engine *engine, const char *text, qx_callback callback, void *context);
/** Suggestions for a typed text: {"query", "a", "suggestions": [styled text]}. */
QX_API void qx_suggest(qx_engine *engine, const char *text, qx_callback callback, void *context);
/** The values of the named contexts: {"contexts", "result"}. */
QX_API void qx_contexts(qx_engine *engine, const char *names, qx_callback callback, void *context);
/** Adds a dynamic context (a JSON object; its first entry counts): {"name", "value", "success"}. */
QX_API void qx_change_context(qx_engine *engine, const char *json_object, qx_callback callback, void *context);
/**
 * The escalation channels of an article for a like state (0-2) and an
 * optional context (NULL for none): {"articleId", "channels": [...]}.
 */
QX_API void qx_channels(qx_engine *engine, const char *article_id, int like_state, const char *channel_context,
                        qx_callback callback, void *context);
/**
 * Reports that the user used channel `channel_index` of an article: a hit of
 * this handle's latest search (an escalation) or an answer fetched through
 * this handle with `qx_answer` or `qx_channels` (a report). Sent without
 * waiting for the service: {"articleId", "form", "channel"} once it is sent.
 */
QX_API void qx_report_channel(qx_engine *engine, const char *article_id, size_t channel_index, qx_callback callback,
                              void *context);
/** Sends a tracked event (a JSON object) of the current conversation. Returns NULL or why it was refused. */
QX_API qx_error *qx_track_event(qx_engine *engine, const char *event_json);

/* --- the bot conversation --------------------------------------------------- */

/** Opens a conversation: {"conversationId"}. The handle keeps the id for the exchanges below. */
QX_API void qx_conversation_create(qx_engine *engine, qx_callback callback, void *context);
/**
 * Opens a conversation declaring the entities the host can supply (a JSON
 * array of strings such as ["number","date"]): {"conversationId"}.
 */
QX_API void qx_conversation_create_with_entities(qx_engine *engine, const char *entities_json, int text_only,
                                                 qx_callback callback, void *context);
/** Sends what the user typed: the bot's reply document, or {"reply": null}. */
QX_API void qx_conversation_statement(qx_engine *engine, const char *text, qx_callback callback, void *context);
/** Sends an option's postback as it is: the bot's reply document. */
QX_API void qx_conversation_postback(qx_engine *engine, const char *payload, qx_callback callback, void *context);
/** Asks the bot for an article: the bot's reply document. */
QX_API void qx_conversation_article(qx_engine *engine, const char *article_id, qx_callback callback, void *context);
/**
 * Sends entities for a statement without waiting to be asked: `entities_json`
 * is an array of entity objects ({"type", "value", "kind"}), `statement` the
 * statement they belong to. The bot's reply document.
 */
QX_API void qx_conversation_send_entities(qx_engine *engine, const char *entities_json, int is_postback,
                                          const char *statement, qx_callback callback, void *context);
/** The feedback reply of the open conversation: a reply document, or {"reply": null}. */
QX_API void qx_conversation_feedback(qx_engine *engine, qx_callback callback, void *context);
/**
 * Answers a question for missing entities (and releases the request):
 * `entities_json` is an array of entity objects, for instance
 * [{"type": "number", "value": "42"}]. Returns NULL, or why the answer was
 * refused (the request is then still released and the exchange ends as abandoned).
 */
QX_API qx_error *qx_answer_missing_entities(qx_request *request, const char *entities_json);
/** Answers a personal-information question with a value, or NULL for a button; releases the request. */
QX_API void qx_answer_personal_information(qx_request *request, const char *value);
/** Releases a question without answering it; its exchange ends as abandoned. NULL is ignored. */
QX_API void qx_request_free(qx_request *request);

#ifdef __cplusplus
}
#endif

#endif /* QUORVIX_C_QUORVIX_H */
