#pragma once
/// @file
/// The host's side of the bot conversation.

namespace quorvix {

/// Implemented by the host to take part in a bot conversation: the engine asks
/// it for missing entities and personal information. Hosts may add operations
/// of their own; the engine sends only its own.
class QXChatEngineDelegate {
 public:
  virtual ~QXChatEngineDelegate() = default;
};

}  // namespace quorvix
