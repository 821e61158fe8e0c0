#include "text/JsonText.h"

#include <gtest/gtest.h>

namespace HostTests {
namespace {

using namespace std::string_view_literals;

std::string quoted(std::string_view text) {
  std::string out;
  Host::appendJsonText(out, text);
  return out;
}
std::string unescaped(std::string_view raw) {
  std::string out;
  return Host::appendUnescaped(out, raw) ? out : "refused";
}

TEST(JsonText, EscapesQuotesBackslashesAndControlCharactersAndNothingElse) {
  EXPECT_EQ(quoted("in: a/b"), R"("in: a/b")");
  EXPECT_EQ(quoted("a\"b\\c"), R"("a\"b\\c")");
  EXPECT_EQ(quoted("\b\f\n\r\t"), R"("\b\f\n\r\t")");
  EXPECT_EQ(quoted("\0\x1f\x7f"sv), "\"\\u0000\\u001f\x7f\"");
  EXPECT_EQ(quoted("\xc3\xa9"), "\"\xc3\xa9\"");
}

TEST(JsonText, ResolvesEveryEscape) {
  EXPECT_EQ(unescaped(R"(a\"\\\/\b\f\n\r\tz)"), "a\"\\/\b\f\n\r\tz");
  EXPECT_EQ(unescaped(R"(\u0041\u00E9\u20ac\uD83D\uDE00)"),
            "A\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80");
}

TEST(JsonText, RefusesWhatIsNoEscape) {
  for (const char* const raw : {R"(\x)", R"(\)", R"(\u12)", R"(\u12g4)", R"(\ud800)", R"(\ud800x)",
                                R"(\ud800\u0041)", R"(\udc00)", R"(\u+123)"}) {
    EXPECT_EQ(unescaped(raw), "refused") << raw;
  }
}

TEST(JsonText, TellsNumbersFromWhatOnlyLooksLikeThem) {
  for (const char* const text : {"0", "-0", "20000", "1.5", "1e3", "1E+3", "-1.25e-3"}) {
    EXPECT_TRUE(Host::isJsonNumber(text)) << text;
  }
  for (const char* const text :
       {"", "-", "+1", "01", "1.", ".5", "1e", "1e+", "0x10", "1 ", "NaN"}) {
    EXPECT_FALSE(Host::isJsonNumber(text)) << text;
  }
}

TEST(JsonText, WritesWholeNumbersAsDigits) {
  EXPECT_EQ(Host::wholeDigits("2e4"), "20000");
  EXPECT_EQ(Host::wholeDigits("20000.0"), "20000");
  EXPECT_EQ(Host::wholeDigits("0.5e1"), "5");
  EXPECT_EQ(Host::wholeDigits("1200e-2"), "12");
  EXPECT_EQ(Host::wholeDigits("0e5"), "0");
  EXPECT_EQ(Host::wholeDigits("-1e1"), "-10");
}

TEST(JsonText, LeavesNumbersThatAreNotWholeOrFarTooLarge) {
  EXPECT_EQ(Host::wholeDigits("2.5"), "2.5");
  EXPECT_EQ(Host::wholeDigits("5e-3"), "5e-3");
  EXPECT_EQ(Host::wholeDigits("1e999999999999"), "1e999999999999");
  EXPECT_EQ(Host::wholeDigits("1e100"), "1e100");
}

}  // namespace
}  // namespace HostTests
