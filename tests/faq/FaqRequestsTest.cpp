#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "engine/Helpers.h"
#include "quorvix/faq/FAQAnswer.h"
#include "quorvix/faq/QXCacheManager.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/search/QXQueryResult.h"
#include "support/RecordedEngineFixture.h"

namespace quorvix {
namespace {

namespace fs = std::filesystem;
using testing::queryNames;
using testing::Reply;
using Names = std::vector<std::string>;

using namespace testing::paths;
constexpr const char* kLabels = "/api/kb/labels/v1/getUserLabels";
constexpr const char* kAnswer = "/api/faq/v1/answer.js";
constexpr const char* kFeedback = "/api/analytics/v1/addFeedback";

class FaqRequestsTest : public testing::RecordedEngineFixture {
 protected:
  void SetUp() override {
    RecordedEngineFixture::SetUp();
    root = fs::temp_directory_path() / ("quorvix-faq-" + std::to_string(::getpid()) + "-" +
                                        ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(root);
    platform::setStorageRoot(root.string());
    params->setApiKey("demo-key");
    handler->autoReply(kCnf, {Reply::json(R"({"kbId":"4711"})")});
    engine->prepareWithAccountParams(params);
  }
  void TearDown() override {
    fs::remove_all(root);
    PlatformFixture::TearDown();
  }

  fs::path root;
};

TEST_F(FaqRequestsTest, ListAndLabelRequestsCarryTheirItemsInOrder) {
  // The asynchronous list: no "Referer", the context in base64.
  params->setQuorvixContext(JsonObject{{"product", "X1"}});
  std::optional<QXResponse> listed;
  handler->autoReply(kList, {Reply::json(R"([{"title":"A","data":[{"data":[]}]}])")});
  engine->fetchFAQList([&](QXResponse response) { listed = std::move(response); });
  ASSERT_TRUE(listed);
  ASSERT_TRUE(listed->typeJson());
  EXPECT_TRUE(listed->typeJson()->is_array());
  EXPECT_EQ(queryNames(last(kList)), (Names{"account", "context", "kb"}));
  EXPECT_EQ(last(kList).queryValue("context"), wrappedBase64("product:X1"));

  // Blocking list read with an empty context: no "context" item.
  params->setQuorvixContext(JsonObject{});
  EXPECT_TRUE(engine->faqList());
  EXPECT_EQ(queryNames(last(kList)), (Names{"account", "isFloat", "kb"}));

  // Labels name the configuration's knowledge-base id.
  handler->autoReply(kLabels, {Reply::json(R"([{"id":"10","labelName":"Billing"}])")});
  auto labels = engine->labels();
  ASSERT_TRUE(labels);
  EXPECT_TRUE(labels->is_array());
  EXPECT_EQ(queryNames(last(kLabels)), (Names{"kb", "apiKey"}));
  EXPECT_EQ(last(kLabels).queryValue("kb"), "4711");
  EXPECT_EQ(last(kLabels).queryValue("apiKey"), "demo-key");

  // The label filter is switched on by the account's label and filled from the given one.
  handler->autoReply(kGroup, {Reply::json(R"({"title":"L","data":[{"data":[{"objectId":"1","label":"One"}]}]})")});
  auto label = std::make_shared<QXLabel>();
  label->setLabelId("300");
  std::optional<std::vector<std::shared_ptr<QXQueryResult>>> answers;
  engine->faqForLabel(label, [&](auto got) { answers = std::move(got); });
  EXPECT_EQ(queryNames(last(kGroup)), (Names{"account", "kb", "allContextsMandatory", "items", "context"}));
  ASSERT_TRUE(answers);
  EXPECT_EQ(answers->size(), 1u);

  params->setLabelId("10");
  params->setQuorvixContext(std::nullopt);
  engine->faqForLabel(label, [&](auto got) { answers = std::move(got); });
  EXPECT_EQ(queryNames(last(kGroup)), (Names{"account", "kb", "allContextsMandatory", "items", "labelId"}));
  EXPECT_EQ(last(kGroup).queryValue("labelId"), "12C");
}

TEST_F(FaqRequestsTest, FailedReadsGiveNothing) {
  // The failure names the URL; its API key stays out of the log.
  handler->autoReply(kLabels, {Reply{0, "", QXError{"NSURLErrorDomain", -1009,
                                                    {{"NSErrorFailingURLStringKey", "https://h/?kb=4711&apiKey=demo-key"}}}}});
  EXPECT_FALSE(engine->labels());
  for (const auto& line : log->lines()) EXPECT_EQ(line.find("demo-key"), std::string::npos) << line;
  handler->autoReply(kGroup, {Reply::json("{broken")});
  params->setLabelId("10");
  EXPECT_FALSE(engine->label());
  EXPECT_EQ(log->countStartingWith("com.quorvix Error:"), 2u);

  // A label request that fails reports no answers; one that parses to nothing never completes.
  int calls = 0;
  std::optional<std::vector<std::shared_ptr<QXQueryResult>>> answers{std::vector<std::shared_ptr<QXQueryResult>>{}};
  handler->autoReply(kGroup, {Reply::failure(-1001), Reply::json("")});
  engine->faqForLabel(std::make_shared<QXLabel>(), [&](auto got) {
    ++calls;
    answers = std::move(got);
  });
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(answers);
  engine->faqForLabel(std::make_shared<QXLabel>(), [&](auto) { ++calls; });
  EXPECT_EQ(calls, 1);
}

TEST_F(FaqRequestsTest, AnswerComesFromTheStoreWithoutARequest) {
  ASSERT_TRUE(QXCacheManager::storeAnswerById("1003", archived(JsonObject{{"objectId", "1003"}, {"title", "Stored"}})));
  const fs::path file = fs::path(QXCacheManager::cachePath()) / "1003";
  const auto old = fs::file_time_type::clock::now() - std::chrono::hours(48);
  fs::last_write_time(file, old);

  std::shared_ptr<FAQAnswer> answer;
  const auto caller = std::this_thread::get_id();
  std::thread::id calledOn;
  engine->fetchFAQAnswer("1003", "ignored-hash", [&](auto got, auto error) {
    EXPECT_FALSE(error);
    answer = got;
    calledOn = std::this_thread::get_id();
  });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->title(), "Stored");
  EXPECT_EQ(calledOn, caller);
  EXPECT_EQ(count(kAnswer), 0u);
  EXPECT_GT(fs::last_write_time(file), old + std::chrono::hours(47)) << "a read records its use";
}

TEST_F(FaqRequestsTest, AnswerMissesGoToTheService) {
  // A corrupt entry falls through to the network, as do refused identifiers.
  fs::create_directories(fs::path(QXCacheManager::cachePath()));
  { std::ofstream(fs::path(QXCacheManager::cachePath()) / "1001") << "not json"; }
  handler->autoReply(kAnswer, {Reply::json(R"({"objectId":"1001","title":"From service"})")});
  std::shared_ptr<FAQAnswer> answer;
  engine->fetchFAQAnswer("1001", std::nullopt, [&](auto got, auto) { answer = got; });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->title(), "From service");
  const auto request = last(kAnswer);
  EXPECT_EQ(queryNames(request), (Names{"id", "referer", "account", "kb"}));
  EXPECT_EQ(request.queryValue("id"), "1001");
  EXPECT_EQ(request.queryValue("referer"), appParams("iOS"));

  params->setKnowledgeBase(std::nullopt);
  std::optional<QXError> error;
  handler->autoReply(kAnswer, {Reply::json(R"({"status":404,"message":"Unknown article"})", 404)});
  engine->fetchFAQAnswer("../1001", std::nullopt, [&](auto got, auto e) {
    EXPECT_FALSE(got);
    error = e;
  });
  EXPECT_EQ(queryNames(last(kAnswer)), (Names{"id", "referer", "account"}));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code, 404);
}

TEST_F(FaqRequestsTest, AnswerStoreRefusesIdentifiersOutsideItsFolder) {
  const std::string answer = archived(JsonObject{{"objectId", "x"}});
  for (const char* refused : {"", "/etc/passwd", "../escape", "a/../../b"}) {
    EXPECT_FALSE(QXCacheManager::storeAnswerById(refused, answer)) << refused;
    EXPECT_FALSE(QXCacheManager::answerById(refused)) << refused;
  }
  EXPECT_FALSE(QXCacheManager::storeAnswerById(std::string("a\0b", 3), answer));
  EXPECT_FALSE(fs::exists(root / "escape"));
  // "/" addresses a subfolder, which is not made for it.
  EXPECT_FALSE(QXCacheManager::storeAnswerById("sub/1", answer));
  fs::create_directory(fs::path(QXCacheManager::cachePath()) / "sub");
  EXPECT_TRUE(QXCacheManager::storeAnswerById("sub/1", answer));
  EXPECT_EQ(QXCacheManager::answerById("sub/1"), (JsonObject{{"objectId", "x"}}));

  // A folder removed behind the store's back is made again on the next use.
  fs::remove_all(QXCacheManager::cachePath());
  EXPECT_FALSE(QXCacheManager::answerById("sub/1"));
  EXPECT_TRUE(QXCacheManager::storeAnswerById("2", answer));
  EXPECT_TRUE(QXCacheManager::answerById("2"));
}

TEST_F(FaqRequestsTest, AnswerStoreHoldsEveryNameTheFilesystemDoesAndNeverFollowsLinks) {
  const std::string answer = archived(JsonObject{{"objectId", "x"}});
  for (std::size_t length : {200u, 244u, 250u, 255u}) {
    const std::string id(length, 'a');
    EXPECT_TRUE(QXCacheManager::storeAnswerById(id, answer)) << length;
    EXPECT_EQ(QXCacheManager::answerById(id), (JsonObject{{"objectId", "x"}})) << length;
  }
  EXPECT_FALSE(QXCacheManager::storeAnswerById(std::string(256, 'a'), answer));
  for (const auto& entry : fs::directory_iterator(QXCacheManager::cachePath())) {
    EXPECT_EQ(entry.path().filename().string().find(".tmp"), std::string::npos) << "no temporary file is left";
  }

  // Links inside the store lead nowhere: neither to a file outside nor to a folder outside.
  const fs::path outside = root / "outside";
  fs::create_directories(outside);
  { std::ofstream(outside / "secret") << R"({"objectId":"secret"})"; }
  const fs::path store = QXCacheManager::cachePath();
  fs::create_symlink(outside / "secret", store / "linked");
  fs::create_directory_symlink(outside, store / "folder");
  EXPECT_FALSE(QXCacheManager::answerById("linked"));
  EXPECT_FALSE(QXCacheManager::answerById("folder/secret"));
  EXPECT_FALSE(QXCacheManager::storeAnswerById("folder/new", answer));
  EXPECT_FALSE(fs::exists(outside / "new"));
  // Storing under a link's name replaces the link, not what it points at.
  EXPECT_TRUE(QXCacheManager::storeAnswerById("linked", answer));
  EXPECT_FALSE(fs::is_symlink(store / "linked"));
  std::ifstream kept(outside / "secret");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), R"({"objectId":"secret"})");
}

TEST_F(FaqRequestsTest, LikeReportsOnTheMainExecutorAndOnlyHttp200Succeeds) {
  auto result = std::make_shared<QXQueryResult>();
  result->setResultId("1003");
  std::vector<bool> outcomes;
  auto record = [&](std::optional<std::string> id, int32_t action, bool success) {
    EXPECT_EQ(id, "1003");
    EXPECT_EQ(action, -1);
    outcomes.push_back(success);
  };
  handler->autoReply(kFeedback, {Reply::json(R"({"status":200})"), Reply::json(R"({"status":201})", 201)});
  engine->like(-1, result, record);
  EXPECT_TRUE(outcomes.empty()) << "the callback waits for the main executor";
  mainQueue->drain();
  ASSERT_EQ(outcomes, std::vector<bool>{true});
  auto sent = last(kFeedback);
  EXPECT_EQ(queryNames(sent), (Names{"id", "ignoreValidateCookie", "action", "account", "kb"}));
  EXPECT_EQ(sent.queryValue("action"), "-1");
  EXPECT_EQ(sent.queryValue("ignoreValidateCookie"), "true");

  result->setDislikeText("Too vague & long");
  engine->like(-1, result, record);
  mainQueue->drain();
  EXPECT_EQ(outcomes, (std::vector<bool>{true, false})) << "201 is not a success";
  EXPECT_EQ(queryNames(last(kFeedback)), (Names{"id", "ignoreValidateCookie", "action", "account", "kb", "feedbackText"}));
  EXPECT_EQ(last(kFeedback).queryValue("feedbackText"), "Too vague & long");
  EXPECT_EQ(count(kHello), 0u) << "no session is opened for feedback";

  // Inside a session the vote carries its "sid".
  engine->setSessionId("s-1");
  handler->autoReply(kFeedback, {Reply::failure(-1005)});
  engine->like(-1, result, record);
  mainQueue->drain();
  EXPECT_EQ(outcomes.back(), false);
  EXPECT_EQ(last(kFeedback).queryValue("sid"), "s-1");
}

}  // namespace
}  // namespace quorvix
