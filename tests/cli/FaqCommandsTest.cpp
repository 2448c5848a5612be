// The configuration and FAQ commands against the embedded sandbox, through the real transport.

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <filesystem>
#include <string>
#include <vector>

#include <quorvix/sandbox/SandboxService.h>

#include "engine/Helpers.h"
#include "quorvix/faq/QXCacheManager.h"
#include "quorvix/platform/Platform.h"
#include "support/ToolRun.h"

namespace quorvix::cli {
namespace {

namespace fs = std::filesystem;
using testing::runTool;

class FaqCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    root = fs::temp_directory_path() / ("quorvix-cli-faq-" + std::to_string(::getpid()));
    platform::setStorageRoot(root.string());
  }
  void TearDown() override { fs::remove_all(root); }
  fs::path root;
};

TEST_F(FaqCommandsTest, ConfigPrintsTheSandboxAccount) {
  const auto run = runTool({"config"});
  ASSERT_EQ(run.code, 0) << run.err;
  for (const char* expected : {"Acme Support", "#FF8000", "Getting started (5 answers)", "27  Security"}) {
    EXPECT_NE(run.out.find(expected), std::string::npos) << expected << "\n" << run.out;
  }
  const auto json = runTool({"--json", "config"});
  ASSERT_EQ(json.code, 0) << json.err;
  const auto document = boost::json::parse(json.out).as_object();
  EXPECT_EQ(document.at("statusBarColor"), "#FF8000");
  EXPECT_EQ(document.at("labels").as_array().size(), 3u);
}

TEST_F(FaqCommandsTest, ConfigFetchesTheConfigurationOncePerConfig) {
  sandbox::SandboxService service;
  ASSERT_NE(service.start(), 0);
  const auto once = runTool({"--service", service.baseURL(), "config"});
  ASSERT_EQ(once.code, 0) << once.err;
  EXPECT_EQ(service.requestsFor("/widget/scripts/cnf.json").size(), 1u);

  // In a shell each later `config` asks the service again.
  service.clearRequests();
  const auto twice = runTool({"--service", service.baseURL(), "shell"}, "config\nconfig\n");
  ASSERT_EQ(twice.code, 0) << twice.err;
  EXPECT_EQ(service.requestsFor("/widget/scripts/cnf.json").size(), 2u);
}

TEST_F(FaqCommandsTest, AnswerComesFromTheServiceOrTheStore) {
  const auto json = runTool({"--json", "answer", "1003"});
  ASSERT_EQ(json.code, 0) << json.err;
  const auto body = boost::json::parse(json.out).at("body").as_object();
  EXPECT_EQ(std::string(body.at("articleBody").as_string()).find("quorvixextradata"), std::string::npos);
  EXPECT_EQ(body.at("extraData").at("durationSeconds"), 95);

  const auto missing = runTool({"answer", "9999"});
  EXPECT_EQ(missing.code, 1);
  EXPECT_NE(missing.err.find("com.quorvix 404"), std::string::npos) << missing.err;

  // An answer the host stored is served without the service.
  ASSERT_TRUE(QXCacheManager::storeAnswerById("9999", archived(JsonObject{{"objectId", "9999"}, {"title", "Kept"}})));
  const auto stored = runTool({"answer", "9999"});
  EXPECT_EQ(stored.code, 0) << stored.err;
  EXPECT_NE(stored.out.find("Kept"), std::string::npos);
}

TEST_F(FaqCommandsTest, ShellRunsListsLabelsAndVotes) {
  const auto run = runTool({"shell"}, "faq-list\nlabels\nlike 1001 -1 --text \"too long\"\nlike no-such-article 1\n");
  EXPECT_EQ(run.code, 1) << "the vote for an unknown article fails";
  EXPECT_NE(run.out.find("How do I set up my Router X1"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("300  Warranty"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("success  yes"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("success  no"), std::string::npos) << run.out;
}

}  // namespace
}  // namespace quorvix::cli
