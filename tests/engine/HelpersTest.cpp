#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

#include "engine/Helpers.h"
#include "quorvix/core/URLComponents.h"
#include "support/PlatformFixture.h"

namespace quorvix {
namespace {

using HelpersTest = testing::PlatformFixture;

TEST_F(HelpersTest, ClientIdentificationCarriesBundleAndBuild) {
  EXPECT_EQ(appParams("iOS"), "app/com.example.host/iOS/42/iOS");
  EXPECT_EQ(appParams("app"), "app/com.example.host/iOS/42/app");
  const auto request = refererRequest("app/x");
  EXPECT_EQ(request.method, "GET");
  EXPECT_DOUBLE_EQ(request.timeoutInterval, 15.0);
  EXPECT_EQ(request.valueForHTTPHeaderField("referer"), "app/x");
}

TEST_F(HelpersTest, CanonicalFormDropsTheFirstItemAndSortsTheRest) {
  EXPECT_EQ(sorted("https://h.example/p/q.js?b=2&c=3&a=1"), "https:%2F%2Fh.example%2F%2Fp%2Fq.js%3Fa=1&c=3");
  // Encoded query pieces are compared decoded; nothing left drops the "?".
  EXPECT_EQ(sorted("https://h.example/x?only=1"), "https:%2F%2Fh.example%2F%2Fx");
  EXPECT_EQ(sorted("https://h.example/x?z=1&b=%41"), "https:%2F%2Fh.example%2F%2Fx%3Fb=A");
  EXPECT_FALSE(sorted("not a url").has_value());

  const std::string digest = md5("https://h.example/p?b=2&c=3&a=1");
  EXPECT_EQ(digest.size(), 32u);
  EXPECT_EQ(digest.find_first_not_of("0123456789abcdef"), std::string::npos);
  // The first item never takes part, and order of the rest does not matter.
  EXPECT_EQ(digest, md5("https://h.example/p?zz=9&a=1&c=3"));
  EXPECT_NE(digest, md5("https://h.example/p?zz=9&a=1&c=4"));
  EXPECT_EQ(md5("abc"), "900150983cd24fb0d6963f7d28e17f72");
}

TEST_F(HelpersTest, PathTypeMatchesWholePrefixesOnly) {
  EXPECT_EQ(pathType("/widget/scripts/"), 0);
  EXPECT_EQ(pathType("/api/faq/v1/"), 1);
  EXPECT_EQ(pathType("/api/widget/v1/"), 2);
  EXPECT_EQ(pathType("/widget/"), 3);
  EXPECT_EQ(pathType("/api/widget/v1/q.js"), 0);
}

TEST_F(HelpersTest, HexColours) {
  EXPECT_EQ(hex("#FF8000"), (QXColor{1.0, 128 / 255.0, 0.0, 1.0}));
  EXPECT_EQ(hex("##00ff00"), (QXColor{0.0, 1.0, 0.0, 1.0}));
  EXPECT_EQ(hex("0x0000FF"), (QXColor{0.0, 0.0, 1.0, 1.0}));
  EXPECT_EQ(hex("12zz"), (QXColor{0.0, 0.0, 18 / 255.0, 1.0}));
  EXPECT_EQ(hex("no colour"), (QXColor{0, 0, 0, 1}));
  EXPECT_EQ(hex("FFFFFFFFFFFF"), (QXColor{1, 1, 1, 1}));  // saturates instead of wrapping
}

TEST_F(HelpersTest, DecodingAndJsonFromText) {
  EXPECT_EQ(decode("it&#39;s %3Cb%3E1%A0%2B%201%3C/b%3E"), "it's <b>1 + 1</b>");
  EXPECT_FALSE(decode("100%").has_value());
  EXPECT_FALSE(decode("%ZZ").has_value());
  EXPECT_FALSE(removingPercentEncoding("%FF").has_value());  // not UTF-8
  EXPECT_EQ(removingPercentEncoding("caf%C3%A9"), "café");

  EXPECT_EQ(parseJSON("%7B%22a%22%3A1%7D"), boost::json::parse(R"({"a":1})"));
  EXPECT_EQ(parseJSON("42"), Json(42));
  EXPECT_EQ(parseJSON("100%"), std::nullopt);  // undecodable text is parsed as it stands
  EXPECT_EQ(parseJSON("{broken"), std::nullopt);
  // Text that no longer parses once decoded is read as it came.
  EXPECT_EQ(parseJSON(R"({"text":"say %22hi%22"})"), boost::json::parse(R"({"text":"say %22hi%22"})"));
  EXPECT_EQ(parseJSON(R"({"text":"100%25 sure"})"), boost::json::parse(R"({"text":"100% sure"})"));
}

TEST_F(HelpersTest, AddressesAreReadWithoutTrustingThem) {
  // An empty query followed by a fragment is data, not a reason to fail.
  auto odd = URLComponents::parse("a://b?#c");
  ASSERT_TRUE(odd);
  EXPECT_EQ(odd->host(), "b");
  EXPECT_TRUE(odd->queryItems().empty());
  for (const char* url : {"a://b?&#c", "a://b?=#", "a://b?&&=&#x?y", "a://b/?#", "quorvix://x.send?#c"}) {
    auto read = URLComponents::parse(url);
    ASSERT_TRUE(read) << url;
    EXPECT_NO_THROW((void)read->string()) << url;
  }
  auto items = URLComponents::parse("https://h/p?x=1&y&=z&x=%41+b&e=&#frag");
  ASSERT_TRUE(items);
  EXPECT_EQ(items->queryItems(), (std::vector<QueryItem>{{"x", "1"}, {"y", std::nullopt}, {"", "z"}, {"x", "A+b"},
                                                        {"e", ""}, {"", std::nullopt}}));
  EXPECT_EQ(URLComponents::parse("a://b?&&")->queryItems().size(), 3u);
  EXPECT_TRUE(URLComponents::parse("a://b?")->queryItems().empty());
}

TEST_F(HelpersTest, IdentifiersFromQueriesAndNumbers) {
  EXPECT_EQ(resultId("x=1&id=42&id=7"), "42");
  EXPECT_EQ(resultId("xid=1&id=4id=2"), "42");
  EXPECT_EQ(resultId("x=1&y=2"), std::nullopt);
  EXPECT_EQ(inHex("255"), "FF");
  EXPECT_EQ(inHex("-1"), "FFFFFFFF");
  EXPECT_EQ(inHex("  12abc"), "C");
  EXPECT_EQ(inHex("99999999999"), "7FFFFFFF");
  EXPECT_EQ(inHex("label"), "0");
  EXPECT_EQ(wrappedBase64("hi?"), "aGk/");
}

TEST_F(HelpersTest, NumbersReadFromAnyJsonType) {
  EXPECT_EQ(integerValue(Json("200")), 200);
  EXPECT_EQ(integerValue(Json(" 404 apples")), 404);
  EXPECT_EQ(integerValue(Json(200.9)), 200);
  EXPECT_EQ(integerValue(Json(1e300)), INT64_MAX);
  EXPECT_EQ(integerValue(Json(true)), 1);
  EXPECT_EQ(integerValue(Json(nullptr)), 0);
  EXPECT_EQ(integerValue(boost::json::parse("[200]")), 0);
  EXPECT_DOUBLE_EQ(doubleValue(Json("600.5s")), 600.5);
  EXPECT_DOUBLE_EQ(doubleValue(Json("abc")), 0.0);
  EXPECT_EQ(describe(Json(600.0)), "600");
  EXPECT_EQ(describe(Json(0.5)), "0.5");
}

TEST_F(HelpersTest, DictionaryWireForms) {
  JsonObject context;
  EXPECT_EQ(wrapped(context), "");
  context["k"] = "v";
  EXPECT_EQ(wrapped(context), "k:v");
  context["brand"] = "x";
  context["n"] = 3;
  EXPECT_EQ(wrapped(context), "k:v,brand:x,n:3");
  EXPECT_EQ(asQuery(context), "k:v");
  EXPECT_EQ(inJSON(context), R"({"k":"v","brand":"x","n":3})");

  JsonObject bad;
  bad["x"] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(inJSON(bad), std::nullopt);
  EXPECT_EQ(log->countStartingWith("JSON not valid "), 1u);
}

TEST_F(HelpersTest, StaticAddressesFollowTheFixedHostAndConsumeApi) {
  JsonObject cnf{{"account", "acme"}, {"api", "cnf"}, {"kb", "support"}};
  EXPECT_EQ(faqURL(cnf), "https://cdn.quorvix.com/~acme/widget/scripts/cnf.json?account=acme&kb=support");
  EXPECT_EQ(cnf.if_contains("api"), nullptr);

  JsonObject list{{"api", "list"}, {"account", "acme"}};
  EXPECT_EQ(faqURL(list), "https://cdn.quorvix.com/~acme/api/faq/v1/list.js?account=acme");
  JsonObject missing{{"api", "list"}};
  EXPECT_EQ(faqURL(missing), std::nullopt);
}

}  // namespace
}  // namespace quorvix
