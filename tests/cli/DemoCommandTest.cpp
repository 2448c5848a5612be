// `quorvix demo` as a person reads it: every step against the embedded sandbox.

#include <gtest/gtest.h>

#include <string>

#include "support/ToolRun.h"

namespace quorvix::cli {
namespace {

// The part of `text` from the line starting with `from` up to the next line starting with `to`.
std::string section(const std::string& text, const std::string& from, const std::string& to) {
  const auto start = text.find("\n" + from);
  if (start == std::string::npos) return {};
  const auto end = text.find("\n" + to, start + 1);
  return text.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

TEST(DemoCommandTest, TourShowsTheLabelsGroupAndMarksWhatItTypes) {
  const auto run = testing::runTool({"--timeout", "20", "demo"});
  const std::string transcript = "\n" + run.out;
  ASSERT_EQ(run.code, 0) << run.err << transcript;

  // The label step names the label in the account, so the group is the label's.
  const auto label = section(transcript, "5. ", "6. ");
  EXPECT_NE(label.find("$ quorvix --label-id 10 label-faq 10"), std::string::npos) << label;
  for (const char* billing : {"1019", "1020", "1021", "1022", "1023"}) {
    EXPECT_NE(label.find("  " + std::string(billing) + "  "), std::string::npos) << billing << label;
  }
  EXPECT_EQ(label.find("1001"), std::string::npos) << "the unfiltered group" << label;

  // In the conversation, what the demo types is marked; the bot's prompts are not.
  const auto chat = section(transcript, "16. ", "17. ");
  for (const char* typed : {"you> hi    [scripted]\n", "number> 250    [scripted]\n",
                            "date> 2026-12-01    [scripted]\n", "you> /feedback    [scripted]\n"}) {
    EXPECT_NE(chat.find(typed), std::string::npos) << typed << chat;
  }
  EXPECT_EQ(chat.find("bot: Hi! I am the Acme assistant. What can I do for you?    [scripted]"), std::string::npos);
}

}  // namespace
}  // namespace quorvix::cli
