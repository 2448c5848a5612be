#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <vector>

#include "engine/Helpers.h"
#include "tool/GlobalOptions.h"

namespace quorvix::cli {
namespace {

/// Parses `arguments` with only the global options declared.
GlobalOptions parsed(std::vector<std::string> arguments) {
  GlobalOptions options;
  CLI::App app;
  addGlobalOptions(app, options);
  std::reverse(arguments.begin(), arguments.end());
  app.parse(arguments);
  return options;
}

TEST(GlobalOptionsTest, ContextIsRepeatableKeepsOrderAndTakesOneValueEach) {
  const auto options = parsed({"--context", "zone:eu", "--context=app:web", "--context", "zone:us"});
  EXPECT_EQ(options.contexts, (std::vector<std::string>{"zone:eu", "app:web", "zone:us"}));

  // A second word after --context is not swallowed as another entry.
  GlobalOptions extra;
  CLI::App app;
  addGlobalOptions(app, extra);
  app.allow_extras();
  app.parse(std::vector<std::string>{"b:2", "a:1", "--context"});
  EXPECT_EQ(extra.contexts, (std::vector<std::string>{"a:1"}));
  EXPECT_EQ(app.remaining(), (std::vector<std::string>{"b:2"}));
}

TEST(GlobalOptionsTest, DefaultsAndGivenValues) {
  const auto defaults = parsed({});
  EXPECT_FALSE(defaults.service || defaults.account || defaults.knowledgeBase || defaults.apiKey ||
               defaults.server || defaults.labelId || defaults.referrer);
  EXPECT_EQ(defaults.bundleId, "com.quorvix.cli");
  EXPECT_EQ(defaults.build, engineVersion());
  EXPECT_EQ(defaults.timeoutSeconds, 30);
  EXPECT_EQ(defaults.lingerSeconds, 0);
  EXPECT_FALSE(defaults.json || defaults.log || defaults.allContextsMandatory);

  const auto given = parsed({"--service", "https://example.test", "--account", "globex", "--kb", "help",
                             "--api-key", "k", "--server", "eu1", "--label-id", "9", "--referrer", "",
                             "--all-contexts-mandatory", "--bundle-id", "com.example", "--build", "12", "--json",
                             "--log", "--timeout", "2.5", "--linger", "0"});
  EXPECT_EQ(given.service, "https://example.test");
  EXPECT_EQ(given.account, "globex");
  EXPECT_EQ(given.knowledgeBase, "help");
  EXPECT_EQ(given.apiKey, "k");
  EXPECT_EQ(given.server, "eu1");
  EXPECT_EQ(given.labelId, "9");
  // Given but empty is still given: the referrer is set to "", not left at its default.
  EXPECT_EQ(given.referrer, "");
  EXPECT_TRUE(given.allContextsMandatory);
  EXPECT_EQ(given.bundleId, "com.example");
  EXPECT_EQ(given.build, "12");
  EXPECT_TRUE(given.json);
  EXPECT_TRUE(given.log);
  EXPECT_DOUBLE_EQ(given.timeoutSeconds, 2.5);
  EXPECT_DOUBLE_EQ(given.lingerSeconds, 0);
}

TEST(GlobalOptionsTest, SecondsMustBeFiniteNumbersInRange) {
  for (const std::vector<std::string>& bad :
       {std::vector<std::string>{"--timeout", "0"}, {"--timeout", "-1"}, {"--timeout", "soon"},
        {"--timeout", "inf"}, {"--linger", "-0.5"}, {"--linger", "nan"}, {"--linger", "3s"}}) {
    EXPECT_THROW(parsed(bad), CLI::ValidationError) << bad[0] << " " << bad[1];
  }
  EXPECT_DOUBLE_EQ(parsed({"--timeout", "0.01"}).timeoutSeconds, 0.01);
  EXPECT_DOUBLE_EQ(parsed({"--linger", "1e1"}).lingerSeconds, 10);
}

}  // namespace
}  // namespace quorvix::cli
