#pragma once
/// @file
/// Lets a command wait for a request the engine sends without a completion
/// (channel reports, tracked events): a transport in front of the engine's own
/// that tells when a request to a given path has been answered.

#include <memory>
#include <optional>
#include <string>

#include "quorvix/engine/Quorvix.h"
#include "quorvix/platform/QXConnectionHandler.h"
#include "tool/Wait.h"

namespace quorvix::cli {

/// How a watched request ended.
struct Delivery {
  /// The address as sent.
  std::string url;
  /// The HTTP status; absent when no answer arrived.
  std::optional<long> status;
  std::optional<QXError> error;
};

/// Passes every request on to the transport it replaced and reports the first
/// answered request whose path ends in the watched suffix.
class DeliveryWatch : public QXConnectionHandler {
 public:
  /// Puts a watch in front of `engine`'s transport. The engine holds it
  /// until `uninstall` puts the transport back.
  static std::shared_ptr<DeliveryWatch> install(std::shared_ptr<Quorvix> engine, std::string pathSuffix);
  DeliveryWatch(std::shared_ptr<Quorvix> engine, std::string pathSuffix);

  /// Filled once a watched request has been answered (or has failed).
  Handoff<Delivery>& delivered() { return *delivered_; }
  void uninstall();

  void open(const QXURLRequest& request, QXOpenCompletion completion) override;
  std::optional<std::string> fetchDataAtRequest(const QXURLRequest& request, std::optional<QXError>* error) override;

  /// Whether the path of `url` (before its query) ends in `suffix`.
  static bool pathEndsWith(const std::string& url, const std::string& suffix);

 private:
  std::shared_ptr<Quorvix> engine_;
  std::shared_ptr<QXConnectionHandler> inner_;
  std::string pathSuffix_;
  std::shared_ptr<Handoff<Delivery>> delivered_ = std::make_shared<Handoff<Delivery>>();
};

}  // namespace quorvix::cli
