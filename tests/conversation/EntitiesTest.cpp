#include <gtest/gtest.h>

#include <boost/json.hpp>
#include <cmath>

#include "quorvix/conversation/QXConversationMissingEntity.h"

namespace quorvix {
namespace {

JsonObject object(std::string_view text) { return boost::json::parse(text).as_object(); }

TEST(EntitiesTest, EntityJsonStartsFromItsDictionaryAndSettersWriteBoth) {
  const JsonObject params = object(R"({"type":"number","value":"5"})");
  auto entity = QXEntity::initWithParams(&params);
  EXPECT_EQ(entity->inJSON(), params);
  EXPECT_FALSE(entity->type().has_value()) << "typed fields are filled by their setters only";
  EXPECT_EQ(QXEntity::initWithParams(nullptr), nullptr);

  entity->setValue("7");
  entity->setValue(std::nullopt);
  entity->setConfidence(0.5);
  entity->setLifecycle(EntityLifecycleStatement);
  entity->setKind("amount");
  entity->setStatementId(3);
  entity->setIsPublic(true);
  EXPECT_EQ(entity->value(), std::nullopt);
  EXPECT_EQ(entity->inJSON(),
            object(R"({"type":"number","value":"7","confidence":0.5,"lifecycle":"statement","kind":"amount"})"));
}

TEST(EntitiesTest, PropertySettersWriteTheJsonOnlyExceptValue) {
  auto property = Property::initWithKind("k", "t", "v", "n");
  EXPECT_EQ(property->root(), object(R"({"kind":"k","type":"t","value":"v","name":"n"})"));
  EXPECT_FALSE(property->kind().has_value());
  EXPECT_FALSE(property->type().has_value());
  EXPECT_FALSE(property->name().has_value());
  EXPECT_EQ(property->value(), "v");
  property->setName(std::nullopt);
  EXPECT_EQ(property->root().at("name"), "n");
}

TEST(EntitiesTest, ChildPropertiesAreSnapshotsWhileEntityPropertiesAreLive) {
  auto parent = Property::initWithKind(std::nullopt, std::nullopt, "parent", std::nullopt);
  auto child = Property::initWithKind(std::nullopt, std::nullopt, "before", std::nullopt);
  parent->addProperty(child);
  parent->addProperty(nullptr);
  child->setValue("after");
  EXPECT_EQ(parent->root().at("properties"), boost::json::parse(R"([{"value":"before"}])"));

  QXEntity entity;
  entity.addProperty(parent);
  entity.addProperty(nullptr);
  parent->setValue("changed");
  EXPECT_EQ(entity.inJSON().at("properties"),
            boost::json::parse(R"([{"value":"changed","properties":[{"value":"before"}]}])"));
}

TEST(EntitiesTest, NullEntriesTheHostPassesAreSkipped) {
  auto missing = QXConversationMissingEntity::initWithStatement("send 100");
  auto amount = std::make_shared<QXEntity>();
  amount->setValue("100");
  amount->setProperties({nullptr, Property::initWithKind("k", std::nullopt, "v", std::nullopt), nullptr});
  missing->setEnteties({nullptr, amount, nullptr});
  EXPECT_EQ(missing->inJSON(), R"([{"value":"100","properties":[{"kind":"k","value":"v"}]}])");
}

TEST(EntitiesTest, MissingEntityJsonIsTheArrayOfEntities) {
  auto missing = QXConversationMissingEntity::initWithStatement("send 100");
  EXPECT_EQ(missing->inJSON(), "[]");
  missing->addEntity(nullptr);
  EXPECT_EQ(missing->inJSON(), "[]");
  auto amount = std::make_shared<QXEntity>();
  amount->setType(EntityTypeNumber);
  amount->setValue("100");
  missing->addEntity(amount);
  missing->addEntity(std::make_shared<QXEntity>());
  EXPECT_EQ(missing->inJSON(), R"([{"type":"number","value":"100"},{}])");
  EXPECT_EQ(missing->enteties().size(), 2u);

  amount->setConfidence(std::nan(""));
  EXPECT_EQ(missing->inJSON(), std::nullopt) << "a value JSON cannot hold";
}

}  // namespace
}  // namespace quorvix
