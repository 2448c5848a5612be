#include "quorvix/conversation/QXConversationMissingEntity.h"

#include "engine/Helpers.h"

namespace quorvix {

std::shared_ptr<QXConversationMissingEntity> QXConversationMissingEntity::initWithStatement(
    std::optional<std::string> statement) {
  auto missing = std::make_shared<QXConversationMissingEntity>();
  missing->statement_ = std::move(statement);
  return missing;
}

void QXConversationMissingEntity::setEnteties(std::vector<std::shared_ptr<QXEntity>> enteties) {
  std::erase(enteties, nullptr);
  enteties_ = std::move(enteties);
}

void QXConversationMissingEntity::addEntity(const std::shared_ptr<QXEntity>& entity) {
  if (entity) enteties_.push_back(entity);
}

std::optional<std::string> QXConversationMissingEntity::inJSON() const {
  std::string text = "[";
  for (std::size_t i = 0; i < enteties_.size(); ++i) {
    // `inJSON` of a dictionary refuses values it cannot write (NaN confidence).
    auto entity = quorvix::inJSON(enteties_[i]->inJSON());
    if (!entity) return std::nullopt;
    if (i > 0) text += ',';
    text += *entity;
  }
  text += ']';
  return text;
}

}  // namespace quorvix
