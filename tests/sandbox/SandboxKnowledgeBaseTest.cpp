#include <gtest/gtest.h>

#include <boost/json.hpp>

#include "sandbox/SandboxTestSupport.h"

namespace quorvix::sandbox {
namespace {

using testing::SandboxServiceTest;

boost::json::value body(const httplib::Result& result) { return boost::json::parse(result->body); }

class SandboxKnowledgeBaseTest : public SandboxServiceTest {};

TEST_F(SandboxKnowledgeBaseTest, ServesConfigurationGroupsAndLabels) {
  auto cnf = get("acme.localhost", "/widget/scripts/cnf.json?kb=support&isFloat=true");
  ASSERT_TRUE(cnf);
  EXPECT_EQ(cnf->status, 200);
  EXPECT_TRUE(body(cnf).at("faqData").is_array());
  auto underContext = get("acme.localhost", "/widget/scripts/cnf.json?isFloat=true&context=product%3AX1");
  // Context filters travel in base64 ("product:Mesh Node M2").
  auto list = get("acme.localhost", "/api/faq/v1/list.json?account=acme&context=cHJvZHVjdDpNZXNoIE5vZGUgTTI%3D");
  ASSERT_EQ(list->status, 200);
  EXPECT_EQ(body(list).at(0).at("title"), "Mesh Node M2 essentials");
  EXPECT_EQ(get("acme.localhost", "/api/faq/v1/list.json?account=acme&context=%21%21")->status, 400);
  EXPECT_EQ(body(underContext).at("faqData"), "context-dependent");
  EXPECT_EQ(get("acme.localhost", "/widget/scripts/cnf.json?kb=nope")->status, 404);

  // "1B" is the label 27 in hexadecimal.
  auto label = get("acme.localhost", "/api/kb/v1/faq?account=acme&labelId=1B&kb=support&items=2");
  ASSERT_EQ(label->status, 200);
  EXPECT_EQ(body(label).at("title"), "Security");
  EXPECT_EQ(body(label).at("data").at(0).at("data").as_array().size(), 2u) << "items limits the answers";
  EXPECT_EQ(get("acme.localhost", "/api/kb/v1/faq?account=acme&labelId=ZZ")->status, 404);
  EXPECT_EQ(get("acme.localhost", "/api/kb/v1/faq?account=globex&labelId=1B")->status, 400);

  EXPECT_EQ(get("acme.localhost", "/api/kb/labels/v1/getUserLabels?kb=4711&apiKey=demo-key-7f3a")->status, 200);
  EXPECT_EQ(get("acme.localhost", "/api/kb/labels/v1/getUserLabels?kb=4711&apiKey=wrong")->status, 401);
  EXPECT_EQ(get("acme.localhost", "/api/kb/labels/v1/getUserLabels?kb&apiKey=demo-key-7f3a")->status, 400);
}

TEST_F(SandboxKnowledgeBaseTest, AnswersAndFeedbackCheckTheArticle) {
  auto answer = get("acme.localhost", "/api/faq/v1/answer.js?id=1022&referer=x&account=acme&kb=support");
  ASSERT_EQ(answer->status, 200);
  EXPECT_NE(std::string(body(answer).at("body").as_string()).find("<quorvixextradata>"), std::string::npos);
  EXPECT_EQ(get("acme.localhost", "/api/faq/v1/answer.js?id=404&account=acme")->status, 404);
  EXPECT_EQ(get("unknown.localhost", "/api/faq/v1/answer.js?id=1022")->status, 404);

  EXPECT_EQ(get("acme.localhost", "/api/analytics/v1/addFeedback?id=1022&action=-1&account=acme")->status, 200);
  EXPECT_EQ(get("acme.localhost", "/api/analytics/v1/addFeedback?id=1022&action=1x&account=acme")->status, 400);
  EXPECT_EQ(get("acme.localhost", "/api/analytics/v1/addFeedback?id=1022&action=1&sid=stale")->status, 400);
  const std::string sid = openSession();
  EXPECT_EQ(get("acme.localhost", "/api/analytics/v1/addFeedback?id=1022&action=1&sid=" + sid)->status, 200);
}

}  // namespace
}  // namespace quorvix::sandbox
