#include "quorvix/conversation/Property.h"

namespace quorvix {

std::shared_ptr<Property> Property::initWithKind(std::optional<std::string> kind, std::optional<std::string> type,
                                                 std::optional<std::string> value, std::optional<std::string> name) {
  auto property = std::make_shared<Property>();
  property->setKind(kind);
  property->setType(type);
  property->setValue(std::move(value));
  property->setName(name);
  return property;
}

namespace {
std::optional<Json> text(const std::optional<std::string>& value) {
  if (!value) return std::nullopt;
  return Json(*value);
}
}  // namespace

void Property::setKind(const std::optional<std::string>& kind) { safeInsert("kind", text(kind)); }

void Property::setType(const std::optional<std::string>& type) { safeInsert("type", text(type)); }

void Property::setValue(std::optional<std::string> value) {
  value_ = std::move(value);
  safeInsert("value", text(value_));
}

void Property::setName(const std::optional<std::string>& name) { safeInsert("name", text(name)); }

JsonArray Property::properties() const {
  if (const auto* children = root_.if_contains("properties")) {
    if (const auto* array = children->if_array()) return *array;
  }
  return {};
}

void Property::addProperty(const std::shared_ptr<Property>& property) {
  auto* children = root_.if_contains("properties");
  if (children == nullptr || !children->is_array()) children = &(root_["properties"] = JsonArray());
  if (!property) return;
  // A snapshot: later changes to the child do not reach this property.
  children->get_array().emplace_back(property->root());
}

void Property::safeInsert(std::string_view key, const std::optional<Json>& value) {
  if (value && !value->is_null()) root_[key] = *value;
}

}  // namespace quorvix
