#pragma once
// The host's qx_chat_handler as the engine's chat delegate.

#include <memory>
#include <optional>
#include <string>

#include "quorvix/c/quorvix.h"
#include "quorvix/conversation/QXChatEngineDelegate.h"

struct qx_request {
  /// A question for missing entities: the handler that resends the statement.
  quorvix::QXMissingEntitiesHandler entities;
  std::optional<std::string> statement;
  /// A personal-information question.
  std::shared_ptr<quorvix::QXPersonalInfo> info;
};

namespace quorvix::capi {

/// Puts the engine's questions to the host through the executor; each
/// question is a qx_request the host answers (or releases) once.
class ChatBridge : public QXChatEngineDelegate {
 public:
  explicit ChatBridge(qx_chat_handler handler) : handler_(handler) {}
  void shouldHandleMissingEntities(std::shared_ptr<QXConversationalResponse> response,
                                   QXMissingEntitiesHandler missingEntitiesHandler) override;
  bool shouldHandlePersonalInformation(std::shared_ptr<QXPersonalInfo> personalInfo) override;

 private:
  qx_chat_handler handler_;
};

}  // namespace quorvix::capi
