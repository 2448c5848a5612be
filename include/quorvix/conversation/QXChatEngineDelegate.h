#pragma once
/// @file
/// The host's side of the bot conversation.

#include <functional>
#include <memory>

namespace quorvix {

class QXConversationalResponse;
class QXConversationMissingEntity;
class QXPersonalInfo;

/// Takes the host's answer to a question for missing entities; the engine
/// then sends the entities. May be called later and on any thread.
using QXMissingEntitiesHandler = std::function<void(std::shared_ptr<QXConversationMissingEntity> missingEntity)>;

/// Implemented by the host to take part in a bot conversation: the engine asks
/// it for missing entities and personal information. Hosts may add operations
/// of their own; the engine sends only its own. The engine holds it weakly.
class QXChatEngineDelegate {
 public:
  virtual ~QXChatEngineDelegate() = default;

  /// The bot's reply asks for entities the statement lacked (its
  /// `missingEntities` holds the request as the service sent it). The host
  /// builds a `QXConversationMissingEntity` and calls the handler once; the
  /// statement's completion is then called for the answer to that resend, not
  /// for this reply. Called on the thread the reply arrived on.
  virtual void shouldHandleMissingEntities(std::shared_ptr<QXConversationalResponse> response,
                                           QXMissingEntitiesHandler missingEntitiesHandler) = 0;

  /// A reply carries a "{{...}}" personal-information placeholder. A host that
  /// handles it returns true and calls `personalInfoCallback` of the object
  /// once (later and on any thread are fine) with a value, or with nothing to
  /// get a button. Returning false (the default) means the host does not take
  /// part: the reply is then never delivered.
  virtual bool shouldHandlePersonalInformation(std::shared_ptr<QXPersonalInfo> personalInfo) {
    (void)personalInfo;
    return false;
  }
};

}  // namespace quorvix
