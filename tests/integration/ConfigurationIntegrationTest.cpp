// The prepare road and the FAQ reads through the real transport against the sandbox on loopback.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <mutex>

#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/faq/FAQAnswer.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/search/QXQueryResult.h"
#include "support/SandboxFixture.h"

namespace quorvix {
namespace {

namespace fs = std::filesystem;
using testing::eventually;

class ConfigurationIntegrationTest : public testing::SandboxFixture {
 protected:
  void SetUp() override {
    root = fs::temp_directory_path() / ("quorvix-config-it-" + std::to_string(::getpid()));
    startService();
    platform::setStorageRoot(root.string());
    params->setApiKey(sandbox::SandboxService::kDemoApiKey);
  }
  void TearDown() override {
    SandboxFixture::TearDown();
    fs::remove_all(root);
  }

  std::shared_ptr<QXConfiguration> prepare() {
    std::mutex mutex;
    std::shared_ptr<QXConfiguration> received;
    engine->prepareWithAccountParams(params);
    engine->setFetchConfiguration([&](auto configuration, auto error) {
      EXPECT_FALSE(error);
      std::lock_guard lock(mutex);
      received = configuration;
    });
    EXPECT_TRUE(eventually([&] { return engine->isPrepared(); }));
    std::lock_guard lock(mutex);
    return received;
  }

  fs::path root;
};

TEST_F(ConfigurationIntegrationTest, PrepareRoadEndsWithTheEnginePrepared) {
  auto configuration = prepare();
  ASSERT_TRUE(configuration);
  EXPECT_EQ(configuration->kbId(), "4711");
  EXPECT_EQ(configuration->navBar()->title(), "Acme Support");
  EXPECT_EQ(configuration->statusBarColor(), (QXColor{1.0, 128.0 / 255.0, 0.0, 1.0}));
    EXPECT_EQ(configuration->labels().size(), 3u);
  ASSERT_EQ(configuration->faqs().size(), 1u);
  EXPECT_EQ(configuration->faqs().at(0)->title(), "Getting started");
  EXPECT_EQ(configuration->faqs().at(0)->data().size(), 5u);

  const auto cnf = service.requestsFor("/widget/scripts/cnf.json").at(0);
  EXPECT_EQ(cnf.target.substr(cnf.target.find("&kb=")), "&kb=support&isFloat=true");

  // Labels, after the configuration, name its knowledge-base id.
  auto labels = engine->labels();
  ASSERT_TRUE(labels && labels->is_array());
  EXPECT_EQ(labels->get_array().size(), 3u);

  // An answer from the service, its extra data split from the body.
  std::atomic<bool> done{false};
  std::shared_ptr<FAQAnswer> answer;
  engine->fetchFAQAnswer("1003", std::nullopt, [&](auto got, auto error) {
    EXPECT_FALSE(error);
    answer = got;
    done = true;
  });
  ASSERT_TRUE(eventually([&] { return done.load(); }));
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->resultId(), "1003");
  ASSERT_TRUE(answer->body());
  EXPECT_EQ(answer->body()->extraData()->as_object().at("durationSeconds"), 95);

  // A vote the service accepts, and one for an article it does not know. The
  // two are in flight together, so their answers may come back in either order.
  std::map<std::string, bool> votes;
  const auto record = [&](std::optional<std::string> resultId, int32_t, bool success) {
    votes[resultId.value_or("")] = success;
  };
  auto result = std::make_shared<QXQueryResult>();
  result->setResultId("1003");
  engine->like(1, result, record);
  auto unknown = std::make_shared<QXQueryResult>();
  unknown->setResultId("no-such-article");
  engine->like(1, unknown, record);
  ASSERT_TRUE(eventually([&] {
    mainQueue->drain();
    return votes.size() == 2;
  }));
  EXPECT_EQ(votes, (std::map<std::string, bool>{{"1003", true}, {"no-such-article", false}}));
}

TEST_F(ConfigurationIntegrationTest, LabelAndContextDecideTheGroups) {
  params->setLabelId("27");
  auto configuration = prepare();
  ASSERT_TRUE(configuration);
  ASSERT_EQ(configuration->faqs().size(), 1u);
  EXPECT_EQ(configuration->faqs().at(0)->title(), "Security");
  EXPECT_EQ(configuration->faqs().at(0)->data().size(), 4u);

  // Under a context the list is read for it.
  params->setLabelId(std::nullopt);
  params->setQuorvixContext(JsonObject{{"product", "Mesh Node M2"}});
  configuration = prepare();
  ASSERT_TRUE(configuration);
  EXPECT_TRUE(configuration->isContextDependent());
  ASSERT_EQ(configuration->faqs().size(), 1u);
  EXPECT_EQ(configuration->faqs().at(0)->title(), "Mesh Node M2 essentials");
}

}  // namespace
}  // namespace quorvix
