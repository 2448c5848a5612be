// Search, suggestions, contexts and channels through the real transport
// against the sandbox service on loopback.
#include <gtest/gtest.h>

#include "quorvix/configuration/QXComponentConfiguration.h"
#include "quorvix/search/QXAutoCompleteResponse.h"
#include "quorvix/search/QXSearchResponse.h"
#include "support/SandboxFixture.h"

namespace quorvix {
namespace {

using testing::Delivery;
using Outcome = std::pair<std::shared_ptr<QXSearchResponse>, std::optional<QXError>>;

class SearchIntegrationTest : public testing::SandboxFixture {
 protected:
  std::shared_ptr<QXSearchResponse> search(const std::string& text) {
    Delivery<Outcome> delivery;
    engine->searchText(text, [&](auto result, auto error) { delivery.deliver({result, error}); });
    auto outcome = delivery.take();
    EXPECT_TRUE(outcome && !outcome->second) << text;
    return outcome ? outcome->first : nullptr;
  }
};

TEST_F(SearchIntegrationTest, SearchFindsRankedHitsAndTheTextArrivesExactly) {
  auto result = search("reset password");
  ASSERT_TRUE(result);
  ASSERT_FALSE(result->answerList().empty());
  const auto& top = result->answerList().front();
  EXPECT_TRUE(top->resultId());
  EXPECT_NE(top->title().value_or("").find("assword"), std::string::npos) << top->title().value_or("");
  ASSERT_TRUE(top->body());
  EXPECT_EQ(top->body()->articleBody().value_or("").find("<quorvixextradata>"), std::string::npos);

  const std::string awkward = "café + tea & 50% = #1";
  search(awkward);
  const auto sent = service.requestsFor("/api/widget/v1/q.js").back();
  EXPECT_EQ(sent.queryValue("text"), awkward);
  EXPECT_EQ(sent.query.back().first, "sid");
}

TEST_F(SearchIntegrationTest, SuggestionsComeStyled) {
  Delivery<std::shared_ptr<QXAutoCompleteResponse>> delivery;
  engine->suggestionsForText("pass", [&](auto result, auto) { delivery.deliver(result); });
  auto reply = delivery.take();
  ASSERT_TRUE(reply && *reply);
  const auto styled = (*reply)->suggestions(QXAutoCompleteConfiguration());
  ASSERT_FALSE(styled.empty());
  bool emphasised = false;
  for (const auto& suggestion : styled) {
    for (const auto& run : suggestion.runs) emphasised = emphasised || run.font.bold;
  }
  EXPECT_TRUE(emphasised);
}

TEST_F(SearchIntegrationTest, AContextChangeNarrowsTheNextSearch) {
  auto before = search("router");
  ASSERT_TRUE(before);
  Delivery<bool> changed;
  engine->changeContext(JsonObject{{"product", "Acme Home app"}}, [&](bool ok, auto) { changed.deliver(ok); });
  EXPECT_EQ(changed.take(), true);
  EXPECT_EQ(service.requestsFor("/api/widget/v1/setParams").back().queryValue("context"), "product:Acme Home app");
  auto after = search("router");
  ASSERT_TRUE(after);
  EXPECT_LT(after->answerList().size(), before->answerList().size());
}

TEST_F(SearchIntegrationTest, ChannelsOfAHitAndItsReport) {
  auto result = search("reset password");
  ASSERT_TRUE(result && !result->answerList().empty());
  auto hit = result->answerList().front();
  hit->setLikeState(2);
  Delivery<std::optional<std::vector<std::shared_ptr<QXChanneling>>>> delivery;
  engine->channels(hit, std::nullopt, [&](auto list, auto) { delivery.deliver(list); });
  auto channels = delivery.take();
  ASSERT_TRUE(channels && *channels && !(*channels)->empty());
  EXPECT_EQ(service.requestsFor("/api/channeling/v1/get").back().queryValue("clientState"), "negativeFeedback");

  engine->reportChanneling((*channels)->front(), hit);
  ASSERT_TRUE(testing::eventually([&] { return !service.requestsFor("/api/channeling/v1/escalate").empty(); }));
  const auto escalation = service.requestsFor("/api/channeling/v1/escalate").back();
  EXPECT_EQ(escalation.queryValue("articleId"), hit->resultId());
  EXPECT_EQ(escalation.queryValue("apiName"), (*channels)->front()->buttonText());
}

}  // namespace
}  // namespace quorvix
