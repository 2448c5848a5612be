/* The C API from C: compiled as C11 with warnings as errors and run against
 * the sandbox service, whose base URL is the first argument
 * (http://localhost:PORT). Exits 0 when every check holds. */
#define _POSIX_C_SOURCE 200809L

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "quorvix/c/quorvix.h"

static int failures = 0;

#define CHECK(condition)                                                   \
  do {                                                                     \
    if (!(condition)) {                                                    \
      fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                          \
    }                                                                      \
  } while (0)

/* One callback's outcome, waited for by the test's thread. */
typedef struct outcome {
  pthread_mutex_t mutex;
  pthread_cond_t done;
  int calls;
  char *json;
  char *error_json;
  char *error_domain;
  long error_code;
} outcome;

static void outcome_init(outcome *o) {
  memset(o, 0, sizeof *o);
  pthread_mutex_init(&o->mutex, NULL);
  pthread_cond_init(&o->done, NULL);
}

static void outcome_reset(outcome *o) {
  free(o->json);
  free(o->error_json);
  free(o->error_domain);
  pthread_mutex_destroy(&o->mutex);
  pthread_cond_destroy(&o->done);
  outcome_init(o);
}

static char *copy(const char *text) {
  if (text == NULL) return NULL;
  char *result = malloc(strlen(text) + 1);
  strcpy(result, text);
  return result;
}

static void record(void *context, const char *json, const qx_error *error) {
  outcome *o = context;
  pthread_mutex_lock(&o->mutex);
  ++o->calls;
  if (o->calls == 1) {
    o->json = copy(json);
    if (error != NULL) {
      o->error_json = copy(error->json);
      o->error_domain = copy(error->domain);
      o->error_code = error->code;
    }
  }
  pthread_cond_broadcast(&o->done);
  pthread_mutex_unlock(&o->mutex);
}

/* Waits up to ten seconds for the callback; false when it never came. */
static int wait_for(outcome *o) {
  struct timespec deadline;
  clock_gettime(CLOCK_REALTIME, &deadline);
  deadline.tv_sec += 10;
  pthread_mutex_lock(&o->mutex);
  while (o->calls == 0) {
    if (pthread_cond_timedwait(&o->done, &o->mutex, &deadline) != 0) break;
  }
  const int called = o->calls > 0;
  pthread_mutex_unlock(&o->mutex);
  return called;
}

/* The bot's question for missing entities, answered with an amount and a date. */
static int entity_questions = 0;
static void answer_entities(void *context, const char *reply_json, qx_request *request) {
  (void)context;
  ++entity_questions;
  CHECK(strstr(reply_json, "\"missingEntities\":[") != NULL);
  qx_error *refused = qx_answer_missing_entities(
      request, "[{\"type\":\"number\",\"value\":\"250\",\"kind\":\"amount\"},"
               "{\"type\":\"date\",\"value\":\"2026-12-01\",\"kind\":\"date\"}]");
  CHECK(refused == NULL);
  qx_error_free(refused);
}

static void check_version(void) {
  CHECK(strcmp(qx_version(), QX_VERSION) == 0);
  CHECK(qx_api_version() == QX_API_VERSION);
}

static void check_search_and_answer(qx_engine *engine) {
  outcome o;
  outcome_init(&o);
  qx_search(engine, "router password", record, &o);
  CHECK(wait_for(&o));
  CHECK(o.error_json == NULL);
  CHECK(o.json != NULL && strncmp(o.json, "{\"answerList\":[{", 16) == 0);
  CHECK(o.json != NULL && strstr(o.json, "\"resultId\":\"1004\"") != NULL);

  outcome_reset(&o);
  qx_answer(engine, "1004", NULL, record, &o);
  CHECK(wait_for(&o));
  CHECK(o.json != NULL && strstr(o.json, "\"title\":\"How do I change my Wi-Fi password?\"") != NULL);
  CHECK(o.json != NULL && strstr(o.json, "\"articleBody\":") != NULL);

  /* A channel of the latest search's hit is reported as an escalation. */
  outcome_reset(&o);
  qx_report_channel(engine, "1004", 999, record, &o);
  CHECK(wait_for(&o));
  CHECK(o.error_code == QX_ERROR_INVALID_ARGUMENT);
  outcome_reset(&o);
}

static void check_conversation(qx_engine *engine) {
  qx_chat_handler handler = {NULL, answer_entities, NULL};
  qx_set_chat_handler(engine, &handler);
  outcome o;
  outcome_init(&o);
  qx_conversation_create(engine, record, &o);
  CHECK(wait_for(&o));
  CHECK(o.json != NULL && strstr(o.json, "\"conversationId\":\"") != NULL);

  outcome_reset(&o);
  qx_conversation_statement(engine, "I want to transfer money", record, &o);
  CHECK(wait_for(&o));
  CHECK(entity_questions == 1);
  CHECK(o.json != NULL && strstr(o.json, "Done: 250 will be transferred on 2026-12-01") != NULL);
  outcome_reset(&o);
  qx_set_chat_handler(engine, NULL);
}

static void check_errors(qx_engine *engine, qx_account *account) {
  /* Refused before any request: a service that is not loopback must be https. */
  qx_error *refused = qx_set_service("http://example.com:8080");
  CHECK(refused != NULL);
  CHECK(refused != NULL && refused->code != 0 && strstr(refused->json, "\"userInfo\":{\"") != NULL);
  qx_error_free(refused);

  /* An answer the knowledge base does not have: the service's reason. */
  outcome o;
  outcome_init(&o);
  qx_answer(engine, "no-such-article", NULL, record, &o);
  CHECK(wait_for(&o));
  CHECK(o.json == NULL && o.error_json != NULL);
  CHECK(o.error_json != NULL && strstr(o.error_json, "\"error\":{\"domain\":") != NULL);

  /* A session that cannot start (the service does not know the knowledge
   * base): the search is dropped, and the host hears so, with the reason. */
  outcome_reset(&o);
  qx_account_set_knowledge_base(account, "no-such-kb");
  qx_prepare(engine, account);
  qx_stop(engine); /* the session of the earlier checks goes */
  qx_search(engine, "router", record, &o);
  CHECK(wait_for(&o));
  CHECK(o.error_code == QX_ERROR_ABANDONED);
  CHECK(o.error_json != NULL && strstr(o.error_json, "\"reasonCode\":\"404\"") != NULL);

  /* The preparation's own configuration fetch has failed by now, before any
   * callback asked for it: asking still ends, with the service's 404. */
  outcome_reset(&o);
  qx_configuration(engine, record, &o);
  CHECK(wait_for(&o));
  CHECK(o.json == NULL && o.error_code == 404);

  /* Malformed JSON is refused with a reason, and the callback still runs once. */
  outcome_reset(&o);
  qx_change_context(engine, "{not json", record, &o);
  CHECK(wait_for(&o));
  CHECK(o.error_domain != NULL && strcmp(o.error_domain, QX_ERROR_DOMAIN) == 0);
  CHECK(o.error_code == QX_ERROR_INVALID_ARGUMENT);
  CHECK(o.calls == 1);
  outcome_reset(&o);
}

int main(int argc, char **argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: %s SERVICE_URL\n", argv[0]);
    return 2;
  }
  char storage[] = "/tmp/quorvix-capi-XXXXXX";
  if (mkdtemp(storage) == NULL) return 2;
  qx_set_storage_root(storage);
  qx_error *refused = qx_set_service(argv[1]);
  if (refused != NULL) {
    fprintf(stderr, "service refused: %s\n", refused->json);
    qx_error_free(refused);
    return 1;
  }
  qx_set_host_info("com.quorvix.capi-test", "1");

  qx_account *account = qx_account_new();
  qx_account_set_account(account, "acme");
  qx_account_set_knowledge_base(account, "support");
  qx_account_set_api_key(account, "demo-key-7f3a");
  qx_engine *engine = qx_engine_new();
  qx_prepare(engine, account);

  check_version();
  check_search_and_answer(engine);
  check_conversation(engine);
  check_errors(engine, account);

  qx_engine_free(engine);
  qx_account_free(account);
  if (failures != 0) fprintf(stderr, "%d checks failed\n", failures);
  return failures == 0 ? 0 : 1;
}
