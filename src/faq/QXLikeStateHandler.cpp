#include "quorvix/faq/QXLikeStateHandler.h"

namespace quorvix {

std::map<std::string, bool> QXLikeStateHandler::likeStates() {
  std::lock_guard lock(mutex_);
  if (!likeStates_) likeStates_.emplace();
  return *likeStates_;
}

void QXLikeStateHandler::setLikeStates(std::map<std::string, bool> states) {
  std::lock_guard lock(mutex_);
  likeStates_ = std::move(states);
}

void QXLikeStateHandler::updateLikeState(bool state, std::string ForId) {
  std::lock_guard lock(mutex_);
  if (!likeStates_) likeStates_.emplace();
  (*likeStates_)[std::move(ForId)] = state;
}

std::optional<bool> QXLikeStateHandler::likeStateWithId(const std::string& identifier) const {
  std::lock_guard lock(mutex_);
  if (!likeStates_) return std::nullopt;
  auto found = likeStates_->find(identifier);
  if (found == likeStates_->end()) return std::nullopt;
  return found->second;
}

void QXLikeStateHandler::clear() {
  std::lock_guard lock(mutex_);
  likeStates_.reset();
}

}  // namespace quorvix
