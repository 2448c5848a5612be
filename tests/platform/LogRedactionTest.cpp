// Secrets never reach the log, wherever they stand in a line and however long
// the line is (reply text logged whole can be megabytes).
#include <gtest/gtest.h>

#include <string>

#include "platform/Log.h"

namespace quorvix {
namespace {

using detail::redactSecrets;

TEST(LogRedactionTest, ValuesOfApiKeyAndSidAfterAQueryMarkAreHidden) {
  const std::pair<std::string, std::string> cases[] = {
      {"https://h/p?apiKey=k1&sid=s2", "https://h/p?apiKey=***&sid=***"},
      {"?sid=abc#frag", "?sid=***#frag"},
      {"a?x=1&apiKey=secret value", "a?x=1&apiKey=*** value"},
      {"?&apiKey=k", "?&apiKey=***"},
      {"?apiKey=", "?apiKey=***"},
      // Not query items: no mark before the name, or another name.
      {"apiKey=k sid=s", "apiKey=k sid=s"},
      {"?xsid=1&apiKeys=2", "?xsid=1&apiKeys=2"},
      {"?key=apiKey=1", "?key=apiKey=1"},
      {"", ""},
  };
  for (const auto& [line, shown] : cases) EXPECT_EQ(redactSecrets(line), shown) << line;
}

TEST(LogRedactionTest, MarksAreFoundAtEveryOffsetOfALongLine) {
  const std::string prose(70, 'x');
  for (std::size_t at = 0; at < 20; ++at) {
    std::string line = prose;
    line.insert(at, "&sid=abc&");
    std::string shown = prose;
    shown.insert(at, "&sid=***&");
    EXPECT_EQ(redactSecrets(line), shown) << "at " << at;
  }
  const std::string large(3 << 20, 'y');
  EXPECT_EQ(redactSecrets(large + "?apiKey=k"), large + "?apiKey=***");
}

}  // namespace
}  // namespace quorvix
