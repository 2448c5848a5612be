// How results cross to the host: once, through the executor, as JSON text.

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "capi/Handles.h"
#include "json/ModelJson.h"
#include "quorvix/platform/Platform.h"

namespace quorvix::capi {
namespace {

/// A qx_error and the strings it points into.
struct OwnedError : qx_error {
  std::string domainText;
  std::string userInfoText;
  std::string jsonText;

  explicit OwnedError(const QXError& error)
      : qx_error{},
        domainText(error.domain),
        userInfoText(boost::json::serialize(documents::errorJson(error).at("error").at("userInfo"))),
        jsonText(boost::json::serialize(documents::errorJson(error))) {
    domain = domainText.c_str();
    code = static_cast<long>(error.code);
    user_info_json = userInfoText.c_str();
    json = jsonText.c_str();
  }
  OwnedError(const OwnedError&) = delete;
  OwnedError& operator=(const OwnedError&) = delete;
};

}  // namespace

void logException(const char* where, const std::exception* error) noexcept {
  try {
    platform::log(std::string("quorvix C API: ") + where + " threw " + (error ? error->what() : "an exception"));
  } catch (...) {
  }
}

QXError makeError(long code, std::string description) {
  return QXError{QX_ERROR_DOMAIN, static_cast<int64_t>(code), {{"Description", std::move(description)}}};
}

qx_error* newError(const QXError& error) {
  return new OwnedError(error);
}

void deliver(std::function<void()> task) {
  platform::mainExecutor()->post([task = std::move(task)] { guarded("a callback", task); });
}

std::optional<Json> parse(const char* text) {
  if (text == nullptr) return std::nullopt;
  boost::system::error_code error;
  Json value = boost::json::parse(text, error);
  if (error) return std::nullopt;
  return value;
}

Callback::~Callback() {
  if (!claim()) return;
  std::optional<QXError> reason;
  if (abandonReason_) guarded("the abandon reason", [&] { reason = abandonReason_(); });
  QXError error = makeError(QX_ERROR_ABANDONED, "the engine dropped the request without an answer");
  if (reason) {
    for (const auto& [key, value] : reason->userInfo) error.userInfo.emplace(key, value);
    error.userInfo["reasonDomain"] = reason->domain;
    error.userInfo["reasonCode"] = std::to_string(reason->code);
  }
  guarded("abandoning a request", [&] { post(std::nullopt, std::move(error)); });
}

void Callback::succeed(const JsonObject& document) {
  if (claim()) post(boost::json::serialize(document), std::nullopt);
}

void Callback::fail(const QXError& error) {
  if (claim()) post(std::nullopt, error);
}

void Callback::post(std::optional<std::string> json, std::optional<QXError> error) {
  deliver([callback = callback_, context = context_, json = std::move(json), error = std::move(error)] {
    if (error) {
      OwnedError owned(*error);
      callback(context, nullptr, &owned);
    } else {
      callback(context, json->c_str(), nullptr);
    }
  });
}

std::shared_ptr<Callback> callbackFor(qx_callback callback, void* context) {
  if (callback == nullptr) return nullptr;
  return std::make_shared<Callback>(callback, context);
}

}  // namespace quorvix::capi

extern "C" {

QX_API void qx_error_free(qx_error* error) {
  if (error == nullptr) return;
  delete static_cast<quorvix::capi::OwnedError*>(error);
}

}
