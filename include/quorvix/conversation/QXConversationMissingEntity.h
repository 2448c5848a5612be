#pragma once
/// @file
/// The host's answer to the bot's question for missing entities.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/conversation/QXEntity.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// What the host hands back when the bot asks for entities a statement lacks:
/// one `QXEntity` per requested entity. The engine sends its `inJSON` text.
/// The member is spelled `enteties`; host code is written against that name.
class QXConversationMissingEntity : public QXObject {
 public:
  QXConversationMissingEntity() = default;
  /// Keeps the statement the entities belong to.
  static std::shared_ptr<QXConversationMissingEntity> initWithStatement(std::optional<std::string> statement);

  /// The statement the entities belong to.
  const std::optional<std::string>& statement() const { return statement_; }
  /// Replaces `statement()`.
  void setStatement(std::optional<std::string> statement) { statement_ = std::move(statement); }
  /// The entities, in the order they were added.
  const std::vector<std::shared_ptr<QXEntity>>& enteties() const { return enteties_; }
  /// Replaces `enteties()`; null entries are left out.
  void setEnteties(std::vector<std::shared_ptr<QXEntity>> enteties);
  /// Appends an entity; a null one is ignored.
  void addEntity(const std::shared_ptr<QXEntity>& entity);

  /// The JSON array text of the entities' `inJSON`, in order ("[]" for none);
  /// nothing when it cannot be written. The statement is not part of it.
  std::optional<std::string> inJSON() const;

 private:
  std::optional<std::string> statement_;
  std::vector<std::shared_ptr<QXEntity>> enteties_;
};

}  // namespace quorvix
