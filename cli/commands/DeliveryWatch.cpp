#include "commands/DeliveryWatch.h"

#include <utility>

namespace quorvix::cli {

DeliveryWatch::DeliveryWatch(std::shared_ptr<Quorvix> engine, std::string pathSuffix)
    : engine_(std::move(engine)), inner_(engine_->connectionHandler()), pathSuffix_(std::move(pathSuffix)) {}

std::shared_ptr<DeliveryWatch> DeliveryWatch::install(std::shared_ptr<Quorvix> engine, std::string pathSuffix) {
  auto watch = std::make_shared<DeliveryWatch>(engine, std::move(pathSuffix));
  engine->setConnectionHandler(watch);
  return watch;
}

void DeliveryWatch::uninstall() { engine_->setConnectionHandler(inner_); }

void DeliveryWatch::open(const QXURLRequest& request, QXOpenCompletion completion) {
  if (!pathEndsWith(request.url, pathSuffix_)) {
    inner_->open(request, std::move(completion));
    return;
  }
  // The watch may be gone when the answer comes: the completion keeps the slot alive.
  auto slot = delivered_;
  inner_->open(request, [slot, url = request.url, completion = std::move(completion)](
                            std::string body, std::optional<QXHTTPURLResponse> response, std::optional<QXError> error) {
    Delivery delivery{url, response ? std::optional<long>(response->statusCode) : std::nullopt, error};
    if (completion) completion(std::move(body), std::move(response), std::move(error));
    slot->deliver(std::move(delivery));
  });
}

std::optional<std::string> DeliveryWatch::fetchDataAtRequest(const QXURLRequest& request,
                                                             std::optional<QXError>* error) {
  return inner_->fetchDataAtRequest(request, error);
}

bool DeliveryWatch::pathEndsWith(const std::string& url, const std::string& suffix) {
  const std::string path = url.substr(0, url.find_first_of("?#"));
  return path.size() >= suffix.size() && path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0;
}

}  // namespace quorvix::cli
