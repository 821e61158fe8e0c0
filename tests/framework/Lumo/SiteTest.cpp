#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "Lumo/Site.h"
#include "TraceTools.h"
#include "support/OnThreads.h"

namespace {

using LumoTest::kNumber;

TEST(Site, HasTheNextIdAndIsFoundByIt) {
  const std::uint32_t before = Lumo::siteCount();
  const Lumo::Site& site = LumoTest::siteWith(kNumber);
  EXPECT_EQ(site.id, before);
  EXPECT_EQ(Lumo::siteCount(), before + 1);
  EXPECT_EQ(Lumo::siteOf(site.id), &site);
  EXPECT_EQ(Lumo::siteOf(before + 1), nullptr);
}

TEST(Site, KeepsTheBaseNameOfItsFile) { EXPECT_EQ(LumoTest::siteWith(kNumber).file, "Source.cpp"); }

TEST(Site, HandlerIsTheFormUpToItsParenthesis) {
  EXPECT_EQ(LumoTest::siteWith(kNumber, "handleVrf(const String&)").handler(), "handleVrf");
  EXPECT_EQ(LumoTest::siteWith(kNumber, "plain").handler(), "plain");
}

TEST(Site, FormatHasAPlaceForEachValueAndDoublesPercentSigns) {
  Lumo::Site site;
  site.scope = "void A::";
  site.form = "f()";
  site.pieces = {{" 100% ", nullptr}, {"", &kNumber}, {" of ", nullptr}, {"", &kNumber}};
  EXPECT_EQ(site.format(), "void A::f() 100%% %s of %s");
}

TEST(Site, ManyThreadsGetIdsOfTheirOwn) {
  std::vector<std::vector<const Lumo::Site*>> made(4);
  TestSupport::onThreads(made.size(), [&](std::size_t thread) {
    for (int i = 0; i < 50; ++i) {
      made[thread].push_back(&LumoTest::siteWith(kNumber));
    }
  });
  std::set<std::uint32_t> ids;
  for (const auto& mine : made) {
    for (const Lumo::Site* site : mine) {
      EXPECT_EQ(Lumo::siteOf(site->id), site);
      ids.insert(site->id);
    }
  }
  EXPECT_EQ(ids.size(), 200U);
}

}  // namespace
