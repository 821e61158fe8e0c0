// Paths that are read, and how they are printed; those that are refused stand in BadChangeLines.

#include <gtest/gtest.h>

#include "change/PathReader.h"

namespace HostTests {
namespace {

struct Spelling {
  const char* name;
  const char* read;     ///< behind /vela-l3:policy-source/
  const char* printed;  ///< likewise
};

class PathSpelling : public testing::TestWithParam<Spelling> {};

TEST_P(PathSpelling, IsReadAndPrintedInOneWay) {
  const std::string before = "/vela-l3:policy-source/";
  Host::PathReader reader(Host::Content::everything);
  for (const char* const text : {GetParam().read, GetParam().printed}) {
    Host::TreePath path;
    ASSERT_TRUE(reader.read(before + text, path)) << text << ": " << reader.why();
    EXPECT_EQ(pathOf(stepsOf(path)), before + GetParam().printed);
  }
}

const std::vector<Spelling> kSpellings{
    {"WithoutQuotes", "policy-set[device-name=fw1]", "policy-set[device-name='fw1']"},
    {"InDoubleQuotes", R"(policy-set[device-name="fw1"])", "policy-set[device-name='fw1']"},
    {"WithBlanks", "policy-set[ device-name = 'fw1' ]", "policy-set[device-name='fw1']"},
    {"WithItsModule", "vela-l3:policy-set[vela-l3:device-name=fw1]",
     "policy-set[device-name='fw1']"},
    {"ABracketInQuotes", "policy-set[device-name='f]w']", "policy-set[device-name='f]w']"},
    {"ASingleQuoteInDoubleOnes", R"(policy-set[device-name="f'w"])",
     R"(policy-set[device-name="f'w"])"},
    {"ADoubleQuoteInSingleOnes", R"(policy-set[device-name='f"w'])",
     R"(policy-set[device-name='f"w'])"},
    {"ASingleQuoteThatStandsTwice", "policy-set[device-name='f''w']",
     R"(policy-set[device-name="f'w"])"},
    {"BothQuotesWithoutQuotes", R"(policy-set[device-name=f'"w])",
     R"(policy-set[device-name='f''"w'])"},
    {"BothQuotesAndABracket", R"(policy-set[device-name="'""]'"])",
     R"(policy-set[device-name='''"]'''])"},
};
INSTANTIATE_TEST_SUITE_P(, PathSpelling, testing::ValuesIn(kSpellings),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace HostTests
