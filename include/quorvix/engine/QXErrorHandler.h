#pragma once
/// @file
/// Tells the host when the network is lost and when it works again.

#include <memory>
#include <mutex>
#include <optional>

#include "quorvix/core/QXError.h"

namespace quorvix {

/// Implemented by the host to hear about network loss and recovery. Both
/// calls arrive on the main executor.
class QXErrorHandlerDelegate {
 public:
  virtual ~QXErrorHandlerDelegate() = default;
  /// The network is lost. The engine always passes nothing.
  virtual void didFailWithSource(const void* source) = 0;
  /// Requests work again.
  virtual void didRecover() = 0;
};

/// The error state of the engine's connection layer. The connection layer
/// reports to `shared()` only; `Quorvix::errorHandler()` is a separate
/// instance that nothing reports to.
class QXErrorHandler : public std::enable_shared_from_this<QXErrorHandler> {
 public:
  QXErrorHandler() = default;
  QXErrorHandler(const QXErrorHandler&) = delete;
  QXErrorHandler& operator=(const QXErrorHandler&) = delete;

  /// The process-wide instance the connection layer reports to.
  static std::shared_ptr<QXErrorHandler> shared();

  /// Raises the error state; for the network-loss codes (-1009, -1005, -1003,
  /// -1002, -1000, any domain) logs "error %@" and queues `didFailWithSource`.
  void setError(const QXError& error);
  /// Stores the state; `false` queues `didRecover` (also when it was already false).
  void setErrorState(bool state);
  /// Whether the connection layer is in the error state.
  bool errorState() const;
  /// Always absent: `setError` only raises the state.
  std::optional<QXError> error() const { return std::nullopt; }

  /// The delegate (held weakly).
  std::weak_ptr<QXErrorHandlerDelegate> delegate() const;
  /// Replaces `delegate()`.
  void setDelegate(std::weak_ptr<QXErrorHandlerDelegate> delegate);

 private:
  void notify(bool failed) const;

  mutable std::mutex mutex_;
  bool errorState_ = false;
  std::weak_ptr<QXErrorHandlerDelegate> delegate_;
};

}  // namespace quorvix
