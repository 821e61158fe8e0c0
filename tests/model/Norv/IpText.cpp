#include "Norv/IpText.h"

#include <gtest/gtest.h>

#include <string>

namespace Norv {
namespace {

TEST(IpText, QuotesPlainTextAsItIs) {
  EXPECT_EQ(IpText::quoted(""), "\"\"");
  EXPECT_EQ(IpText::quoted("10.1.0.1 ~"), "\"10.1.0.1 ~\"");
}

TEST(IpText, QuotesBytesThatWouldGarbleAMessageInHexadecimal) {
  EXPECT_EQ(IpText::quoted("a\nb\x1b\x7f"), "\"a\\x0ab\\x1b\\x7f\"");
  EXPECT_EQ(IpText::quoted("say \"no\"\\"), "\"say \\x22no\\x22\\x5c\"");
  EXPECT_EQ(IpText::quoted("\xc3\xa9"), "\"\\xc3\\xa9\"");
  EXPECT_EQ(IpText::quoted(std::string_view("\0", 1)), "\"\\x00\"");
}

TEST(IpText, CutsALongTextAndSaysSo) {
  const std::string sixty(60, 'x');
  EXPECT_EQ(IpText::quoted(sixty), '"' + sixty + '"');
  EXPECT_EQ(IpText::quoted(sixty + "yy"), '"' + sixty + "\" and 2 more bytes");
}

TEST(IpText, CountsThePositionOfACharacterFromOne) {
  EXPECT_EQ(IpText::characterAt("abc", 0), "\"a\" at position 1");
  EXPECT_EQ(IpText::characterAt("abc", 2), "\"c\" at position 3");
}

}  // namespace
}  // namespace Norv
