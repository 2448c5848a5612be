#include "quorvix/conversation/QXEntity.h"

#include <boost/json/serialize.hpp>

namespace quorvix {

namespace {
std::optional<Json> text(const std::optional<std::string>& value) {
  if (!value) return std::nullopt;
  return Json(*value);
}
}  // namespace

std::shared_ptr<QXEntity> QXEntity::initWithParams(const JsonObject* params) {
  if (params == nullptr) return nullptr;
  auto entity = std::make_shared<QXEntity>();
  entity->root_ = *params;
  return entity;
}

void QXEntity::setConfidence(std::optional<double> confidence) {
  confidence_ = confidence;
  safeInsert("confidence", confidence ? std::optional<Json>(*confidence) : std::nullopt);
}

void QXEntity::setType(std::optional<std::string> type) {
  type_ = std::move(type);
  safeInsert("type", text(type_));
}

void QXEntity::setValue(std::optional<std::string> value) {
  value_ = std::move(value);
  safeInsert("value", text(value_));
}

void QXEntity::setKind(std::optional<std::string> kind) {
  kind_ = std::move(kind);
  safeInsert("kind", text(kind_));
}

void QXEntity::setLifecycle(std::optional<std::string> lifecycle) {
  lifecycle_ = std::move(lifecycle);
  safeInsert("lifecycle", text(lifecycle_));
}

void QXEntity::setProperties(std::vector<std::shared_ptr<Property>> properties) {
  std::erase(properties, nullptr);
  properties_ = std::move(properties);
}

void QXEntity::addProperty(const std::shared_ptr<Property>& property) {
  if (property) properties_.push_back(property);
}

void QXEntity::safeInsert(std::string_view key, const std::optional<Json>& value) {
  if (value && !value->is_null()) root_[key] = *value;
}

JsonObject QXEntity::inJSON() {
  if (!properties_.empty()) {
    JsonArray children;
    children.reserve(properties_.size());
    for (const auto& property : properties_) children.emplace_back(property->root());
    root_["properties"] = std::move(children);
  }
  return root_;
}

std::string QXEntity::description() const { return boost::json::serialize(root_); }

}  // namespace quorvix
