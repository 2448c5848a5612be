/* A C host: the C API (libquorvix.so) searches, reads an answer and talks to
 * the bot. Results arrive as JSON documents on the engine's executor thread.
 *   cc host.c $(pkg-config --cflags --libs quorvix) -o host && ./host http://localhost:8080 */
#define _POSIX_C_SOURCE 200809L

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <quorvix/c/quorvix.h>

/* Waits for one callback and keeps what it said. */
typedef struct reply {
  pthread_mutex_t mutex;
  pthread_cond_t arrived;
  int done;
  char text[8192];
  int failed;
} reply;

static void on_result(void *context, const char *json, const qx_error *error) {
  reply *r = context;
  pthread_mutex_lock(&r->mutex);
  snprintf(r->text, sizeof r->text, "%s", error ? error->json : json);
  r->failed = error != NULL;
  r->done = 1;
  pthread_cond_signal(&r->arrived);
  pthread_mutex_unlock(&r->mutex);
}

static void wait_for(reply *r) {
  pthread_mutex_lock(&r->mutex);
  while (!r->done) pthread_cond_wait(&r->arrived, &r->mutex);
  r->done = 0;
  pthread_mutex_unlock(&r->mutex);
}

int main(int argc, char **argv) {
  const char *service = argc > 1 ? argv[1] : getenv("QUORVIX_SERVICE");
  printf("quorvix %s (C API %d)\n", qx_version(), qx_api_version());
  if (service != NULL) {
    qx_error *refused = qx_set_service(service);
    if (refused != NULL) {
      fprintf(stderr, "bad service: %s\n", refused->json);
      qx_error_free(refused);
      return 1;
    }
  }

  qx_account *account = qx_account_new();
  qx_account_set_account(account, "acme");
  qx_account_set_knowledge_base(account, "support");
  qx_account_set_api_key(account, "demo-key-7f3a");
  qx_engine *engine = qx_engine_new();
  qx_prepare(engine, account);

  reply r = {PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, 0, "", 0};
  qx_search(engine, "router password", on_result, &r);
  wait_for(&r);
  printf("search: %.120s...\n", r.text);
  int failed = r.failed;

  qx_answer(engine, "1004", NULL, on_result, &r);
  wait_for(&r);
  printf("answer: %.120s...\n", r.text);
  failed |= r.failed;

  qx_conversation_create(engine, on_result, &r);
  wait_for(&r);
  failed |= r.failed;
  qx_conversation_statement(engine, "hi", on_result, &r);
  wait_for(&r);
  printf("bot: %.120s...\n", r.text);
  failed |= r.failed;

  qx_engine_free(engine);
  qx_account_free(account);
  return failed ? 1 : 0;
}
