#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

#include "Brix/String.h"
#include "Kel/Hash.h"

namespace Kel {
namespace {

TEST(Hash, IsTheSameForTextOfEveryKind) {
  const Brix::String name("a name longer than eight bytes");
  EXPECT_EQ(hashOf(name), hashOf("a name longer than eight bytes"));
  EXPECT_EQ(hashOf(name), hashOf(std::string(name.view())));
  EXPECT_EQ(hashOf(name), hashOf(name.view()));
  EXPECT_EQ(hashOf(Brix::String()), hashOf(""));
  EXPECT_NE(hashOf(name), hashOf("a name longer than eight byteS"));
}

TEST(Hash, IsWhatAMemberHashReturns) {
  struct Decided {
    std::uint32_t hash() const { return 42; }
  };
  EXPECT_EQ(hashOf(Decided{}), 42U);
}

TEST(Hash, MixesEnumerationsAsTheirNumbers) {
  enum class Action : std::uint8_t { forward, drop };
  EXPECT_EQ(hashOf(Action::drop), hashOf(std::uint8_t{1}));
  EXPECT_NE(hashOf(Action::forward), hashOf(Action::drop));
}

TEST(Hash, SpreadsNumbersOverTheUpperAndTheLowerBits) {
  for (const unsigned shift : {0U, 12U, 40U}) {
    std::unordered_set<std::uint32_t> upper;
    std::unordered_set<std::uint32_t> lower;
    for (std::uint64_t number = 0; number != 4096; ++number) {
      upper.insert(hashOf(number << shift) >> 16U);
      lower.insert(hashOf(number << shift) & 0xFFFFU);
    }
    // 4096 of 65536 drawn at random give 3971 different ones, give or take 11.
    EXPECT_GE(upper.size(), 3900U) << shift;
    EXPECT_GE(lower.size(), 3900U) << shift;
  }
}

}  // namespace
}  // namespace Kel
