// The C API: version, process-wide seams, account parameters and engine handles.

#include <memory>
#include <mutex>

#include "capi/ChatBridge.h"
#include "capi/Handles.h"
#include "quorvix/engine/QXErrorHandler.h"
#include "quorvix/platform/MainExecutor.h"
#include "quorvix/platform/Platform.h"
#include "quorvix/platform/ServiceHosts.h"

struct qx_task {
  std::function<void()> run;
};

namespace quorvix::capi {
namespace {

/// The host's executor behind the engine's main-executor seam.
class HostExecutor : public MainExecutor {
 public:
  explicit HostExecutor(qx_executor executor) : executor_(executor) {}
  void post(std::function<void()> task) override {
    executor_.post(executor_.context, new qx_task{std::move(task)});
  }

 private:
  qx_executor executor_;
};

/// Passes the connection layer's notifications to the host.
class ErrorListener : public QXErrorHandlerDelegate {
 public:
  ErrorListener(qx_notification_fn listener, void* context) : listener_(listener), context_(context) {}
  void didFailWithSource(const void*) override { listener_(context_, R"({"event":"failed"})"); }
  void didRecover() override { listener_(context_, R"({"event":"recovered"})"); }

 private:
  qx_notification_fn listener_;
  void* context_;
};

std::mutex listenerMutex;
std::shared_ptr<ErrorListener> installedListener;  // the error handler holds it weakly

}  // namespace
}  // namespace quorvix::capi

using namespace quorvix;
using quorvix::capi::guarded;
using quorvix::capi::optionalText;

extern "C" {

QX_API const char* qx_version(void) { return QX_VERSION; }

QX_API int qx_api_version(void) { return QX_API_VERSION; }

QX_API void qx_task_run(qx_task* task) {
  if (task == nullptr) return;
  guarded("qx_task_run", [&] { task->run(); });
  delete task;
}

QX_API void qx_task_free(qx_task* task) { delete task; }

QX_API void qx_set_executor(const qx_executor* executor) {
  guarded("qx_set_executor", [&] {
    if (executor == nullptr || executor->post == nullptr) {
      platform::setMainExecutor(nullptr);
    } else {
      platform::setMainExecutor(std::make_shared<capi::HostExecutor>(*executor));
    }
  });
}

QX_API void qx_set_log_sink(qx_log_fn sink, void* context) {
  guarded("qx_set_log_sink", [&] {
    if (sink == nullptr) {
      platform::setLogSink({});
      return;
    }
    platform::setLogSink([sink, context](std::string_view line) {
      const std::string text(line);
      sink(context, text.c_str());
    });
  });
}

QX_API void qx_set_error_listener(qx_notification_fn listener, void* context) {
  guarded("qx_set_error_listener", [&] {
    std::lock_guard lock(capi::listenerMutex);
    capi::installedListener = listener ? std::make_shared<capi::ErrorListener>(listener, context) : nullptr;
    QXErrorHandler::shared()->setDelegate(capi::installedListener);
  });
}

QX_API void qx_set_host_info(const char* bundle_identifier, const char* build_number) {
  guarded("qx_set_host_info", [&] {
    platform::setHostInfo(QXHostInfo{bundle_identifier ? bundle_identifier : "", build_number ? build_number : ""});
  });
}

QX_API qx_error* qx_set_service(const char* base_url) {
  qx_error* refused = nullptr;
  guarded("qx_set_service", [&] {
    if (base_url == nullptr) {
      platform::setServiceHosts(QXServiceHosts{});
      return;
    }
    auto hosts = QXServiceHosts::fromServiceBase(base_url);
    if (auto* error = std::get_if<QXError>(&hosts)) {
      refused = capi::newError(*error);
    } else if (auto error = platform::setServiceHosts(std::get<QXServiceHosts>(hosts))) {
      refused = capi::newError(*error);
    }
  });
  return refused;
}

QX_API void qx_set_storage_root(const char* path) {
  if (path == nullptr) return;
  guarded("qx_set_storage_root", [&] { platform::setStorageRoot(path); });
}

QX_API void qx_set_ca_file(const char* path) {
  guarded("qx_set_ca_file", [&] { platform::setCAFile(path ? path : ""); });
}

QX_API qx_account* qx_account_new(void) {
  qx_account* account = nullptr;
  guarded("qx_account_new", [&] { account = new qx_account; });
  return account;
}

QX_API void qx_account_free(qx_account* account) { delete account; }

QX_API void qx_account_set_account(qx_account* account, const char* value) {
  if (account) guarded("qx_account_set_account", [&] { account->params->setAccount(optionalText(value)); });
}

QX_API void qx_account_set_knowledge_base(qx_account* account, const char* value) {
  if (account) guarded("qx_account_set_knowledge_base", [&] { account->params->setKnowledgeBase(optionalText(value)); });
}

QX_API void qx_account_set_api_key(qx_account* account, const char* value) {
  if (account) guarded("qx_account_set_api_key", [&] { account->params->setApiKey(optionalText(value)); });
}

QX_API void qx_account_set_server(qx_account* account, const char* value) {
  if (account) guarded("qx_account_set_server", [&] { account->params->setServer(optionalText(value)); });
}

QX_API void qx_account_set_label_id(qx_account* account, const char* value) {
  if (account) guarded("qx_account_set_label_id", [&] { account->params->setLabelId(optionalText(value)); });
}

QX_API void qx_account_set_referrer(qx_account* account, const char* value) {
  if (account) guarded("qx_account_set_referrer", [&] { account->params->setReferrer(optionalText(value)); });
}

QX_API void qx_account_set_all_contexts_mandatory(qx_account* account, int value) {
  if (account) guarded("qx_account_set_all_contexts_mandatory", [&] { account->params->setAllContextsMandatory(value != 0); });
}

QX_API qx_error* qx_account_set_context(qx_account* account, const char* json_object) {
  qx_error* refused = nullptr;
  guarded("qx_account_set_context", [&] {
    if (account == nullptr) {
      refused = capi::newError(capi::makeError(QX_ERROR_INVALID_ARGUMENT, "no account"));
      return;
    }
    if (json_object == nullptr) {
      account->params->setQuorvixContext(std::nullopt);
      return;
    }
    auto parsed = capi::parse(json_object);
    if (!parsed || !parsed->is_object()) {
      refused = capi::newError(capi::makeError(QX_ERROR_INVALID_ARGUMENT, "the context is not a JSON object"));
      return;
    }
    for (const auto& entry : parsed->get_object()) {
      if (!entry.value().is_string()) {
        refused = capi::newError(capi::makeError(
            QX_ERROR_INVALID_ARGUMENT, "context values are strings; \"" + std::string(entry.key()) + "\" is not"));
        return;
      }
    }
    account->params->setQuorvixContext(parsed->get_object());
  });
  return refused;
}

QX_API qx_engine* qx_engine_new(void) {
  qx_engine* engine = nullptr;
  guarded("qx_engine_new", [&] { engine = new qx_engine{Quorvix::create()}; });
  return engine;
}

QX_API qx_engine* qx_engine_shared(void) {
  qx_engine* engine = nullptr;
  guarded("qx_engine_shared", [&] { engine = new qx_engine{Quorvix::shared()}; });
  return engine;
}

QX_API void qx_engine_free(qx_engine* engine) {
  if (engine == nullptr) return;
  guarded("qx_engine_free", [&] {
    if (engine->state->chat) engine->engine->setChatDelegate({});
    delete engine;
  });
}

QX_API void qx_prepare(qx_engine* engine, const qx_account* account) {
  if (engine == nullptr || account == nullptr) return;
  guarded("qx_prepare", [&] { engine->engine->prepareWithAccountParams(account->params); });
}

QX_API void qx_stop(qx_engine* engine) {
  if (engine) guarded("qx_stop", [&] { engine->engine->stop(); });
}

}  // extern "C"
