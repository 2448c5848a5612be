// The wire forms of the engine's one percent/hex encoder, seen through the
// functions that write and read addresses.
#include <gtest/gtest.h>

#include "engine/Helpers.h"
#include "json/ModelJson.h"
#include "quorvix/core/URLComponents.h"

namespace quorvix {
namespace {

TEST(EncodingTest, EachByteSetKeepsItsOwnCharacters) {
  // A query escapes everything but the unreserved characters, high bytes in upper case.
  EXPECT_EQ(percentEncode("a-._~ +/?=&é"), "a-._~%20%2B%2F%3F%3D%26%C3%A9");

  // A path keeps its sub-delimiters and "/", and escapes blanks, "?", "#" and "%".
  URLComponents url;
  url.setScheme("https");
  url.setHost("h.example");
  url.setPath("/a b/c:@!$&'()*+,;=/%?#é");
  url.appendQueryItem("q", "x y");
  EXPECT_EQ(url.string(), "https://h.example/a%20b/c:@!$&'()*+,;=/%25%3F%23%C3%A9?q=x%20y");

  // The canonical form of a digest keeps host characters and escapes "/" "?" "%" and high bytes.
  EXPECT_EQ(sorted("https://h.example/p?first=1&k=%C3%A9()*"), "https:%2F%2Fh.example%2F%2Fp%3Fk=%C3%A9()*");
}

TEST(EncodingTest, QueryReadingKeepsBadEscapesWhereStrictDecodingRefuses) {
  const auto items = queryItemsOf("a=%41%4&b%zz=50%&%2=%e9%C3%a9");
  ASSERT_EQ(items.size(), 3u);
  EXPECT_EQ(items[0], (QueryItem{"a", "A%4"}));
  EXPECT_EQ(items[1], (QueryItem{"b%zz", "50%"}));
  EXPECT_EQ(items[2], (QueryItem{"%2", "\xE9\xC3\xA9"}));

  EXPECT_EQ(removingPercentEncoding("%41%62c"), "Abc");
  EXPECT_FALSE(removingPercentEncoding("%4").has_value());
  EXPECT_FALSE(removingPercentEncoding("ab%").has_value());
  EXPECT_FALSE(removingPercentEncoding("%g1").has_value());
}

TEST(EncodingTest, DigestsAreLowerCaseAndColoursReadEitherCase) {
  EXPECT_EQ(md5(""), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(hex("#aBcDeF"), (QXColor{0xAB / 255.0, 0xCD / 255.0, 0xEF / 255.0, 1.0}));
  // Colours are written back in upper case, two digits a channel.
  EXPECT_EQ(documents::colorText(hex("#0a1B2c")), "#0A1B2C");
  EXPECT_EQ(documents::colorText(QXColor{0, 1, 2, 1}), "#00FFFF");
}

}  // namespace
}  // namespace quorvix
