#include "policy/MatchWorld.h"

namespace PolicyTests {
namespace {

const IpGenPrefix kP("10.1.0.0/16");
const IpGenPrefix kQ("10.2.0.0/16");
const IpGenPrefix kR("2001:db8::/32");
const VelaL3::VelaIpRange kRange1{IpGenAddr("10.1.0.1"), IpGenAddr("10.1.0.9")};
const VelaL3V2::VelaIpRange kRange2{IpGenAddr("10.1.0.1"), IpGenAddr("10.1.0.9")};
const VelaL3V2::VelaIpRange kStaleRange{IpGenAddr("10.9.0.1"), IpGenAddr("10.9.0.9")};

/// The four address sets of a match.
class MatchAddresses : public MatchWorld {};

TEST_F(MatchAddresses, PrefixesAreFollowedInBothDirections) {
  make();
  v1->srcIpIs(kP);
  v1->dstIpIs(kR);
  EXPECT_EQ(noted(), (Lines{"+10.1.0.0/16", "+2001:db8::/32"}));
  EXPECT_EQ(keys(v2->srcIp()), Lines{"10.1.0.0/16"});
  EXPECT_EQ(keys(v2->dstIp()), Lines{"2001:db8::/32"});
  v1->srcIpDel(kP);
  v1->dstIpDelAll();
  EXPECT_EQ(noted(), (Lines{"-10.1.0.0/16", "-2001:db8::/32"}));
  EXPECT_TRUE(marked());
}

TEST_F(MatchAddresses, RangesAreFollowedInBothDirections) {
  make();
  v1->srcIpRangeIs(kRange1);
  v1->dstIpRangeIs({IpGenAddr("::9"), IpGenAddr("::1")});
  EXPECT_TRUE(v2->srcIpRange(kRange2));
  EXPECT_TRUE(v2->dstIpRange({IpGenAddr("::9"), IpGenAddr("::1")})) << "their order is unchecked";
  v1->srcIpRangeDel(kRange1);
  v1->dstIpRangeDelAll();
  EXPECT_TRUE(v2->srcIpRange().empty());
  EXPECT_TRUE(v2->dstIpRange().empty());
}

TEST_F(MatchAddresses, AKeyThatIsOnBothSidesMarksAllTheSame) {
  v1->srcIpIs(kP);
  make();
  sm->handleSrcIp(kP);
  EXPECT_TRUE(v2->srcIp(kP));
  EXPECT_EQ(noted(), Lines{});
  EXPECT_TRUE(marked());
}

TEST_F(MatchAddresses, AKeyThatIsOnNeitherSideMarksAllTheSame) {
  make();
  sm->handleDstIp(kP);
  sm->handleSrcIpRange(kRange1);
  EXPECT_TRUE(v2->dstIp().empty());
  EXPECT_TRUE(marked());
}

TEST_F(MatchAddresses, AKeyInVersionTwoAloneIsRemoved) {
  make();
  v2->srcIpIs(kP);
  v2->dstIpRangeIs(kRange2);
  sm->handleSrcIp(kP);
  sm->handleDstIpRange(kRange1);
  EXPECT_TRUE(v2->srcIp().empty());
  EXPECT_TRUE(v2->dstIpRange().empty());
}

TEST_F(MatchAddresses, AWalkOverEqualSetsWritesItsTwoLinesAndDoesNotMark) {
  v1->srcIpIs(kP);
  v1->srcIpRangeIs(kRange1);
  make();
  BothTraces traces;
  sm->handleSrcIp();
  sm->handleSrcIpRange();
  EXPECT_EQ(traces.take(),
            (Lines{kMatch(8, "handleSrcIp()"), kMatch(7, "handleSrcIp() return"),
                   kMatch(8, "handleSrcIpRange()"), kMatch(7, "handleSrcIpRange() return")}));
  EXPECT_FALSE(marked());
}

TEST_F(MatchAddresses, AWalkRemovesThenAddsWhatDiffersAndMarksOnce) {
  makeDeaf();
  v1->srcIpIs(kP);
  v1->srcIpIs(kQ);
  v2->srcIpIs(kQ);
  v2->srcIpIs(kR);
  noted();
  const auto marks = cookie->marks();
  sm->handleSrcIp();
  EXPECT_EQ(noted(), (Lines{"-2001:db8::/32", "+10.1.0.0/16"}));
  EXPECT_EQ(cookie->marks(), marks + 1);
  EXPECT_TRUE(marked());
}

TEST_F(MatchAddresses, AWalkOfEachSetReconcilesThatSetAlone) {
  makeDeaf();
  v2->srcIpIs(kP);
  v2->dstIpIs(kP);
  v2->srcIpRangeIs(kStaleRange);
  v2->dstIpRangeIs(kStaleRange);
  sm->handleDstIp();
  EXPECT_TRUE(v2->dstIp().empty());
  EXPECT_TRUE(v2->srcIp(kP));
  sm->handleSrcIpRange();
  EXPECT_TRUE(v2->srcIpRange().empty());
  EXPECT_TRUE(v2->dstIpRange(kStaleRange));
  sm->handleDstIpRange();
  EXPECT_TRUE(v2->dstIpRange().empty());
}

TEST_F(MatchAddresses, AWalkThatOnlyAddsMarks) {
  makeDeaf();
  v1->dstIpRangeIs(kRange1);
  sm->handleDstIpRange();
  EXPECT_TRUE(v2->dstIpRange(kRange2));
  EXPECT_TRUE(marked());
}

TEST_F(MatchAddresses, AWalkThatOnlyRemovesMarks) {
  makeDeaf();
  v2->dstIpIs(kP);
  sm->handleDstIp();
  EXPECT_TRUE(v2->dstIp().empty());
  EXPECT_TRUE(marked());
}

TEST_F(MatchAddresses, TheFirstWalkMakesRoomForJustWhatThereIs) {
  Kel::Set<IpGenPrefix> nine;
  nine.reserve(9);
  for (int i = 0; i < 9; ++i) {
    v1->srcIpIs(IpGenPrefix("10." + std::to_string(i) + ".0.0/16"));
  }
  make();
  EXPECT_EQ(v2->srcIp().size(), 9U);
  EXPECT_EQ(v2->srcIp().heapBytes(), nine.heapBytes());
  EXPECT_LT(nine.heapBytes(), v1->srcIp().heapBytes()) << "which has grown key by key";
}

TEST_F(MatchAddresses, TheFirstWalkTellsWhoWatchesVersion2OfEachKey) {
  v1->srcIpIs(kP);
  v1->srcIpRangeIs(kRange1);
  int told = 0;
  const Kel::Observer watcher(*v2, [&](Kel::AttrId id, const void* key) {
    ++told;
    EXPECT_TRUE(id != VelaL3V2::VelaMatchConfig::srcIpAttr.id ||
                *static_cast<const IpGenPrefix*>(key) == kP);
  });
  make();
  EXPECT_EQ(told, 2);
  EXPECT_TRUE(v2->srcIp(kP));
}

TEST_F(MatchAddresses, AWalkIntoAnEmptySetThatNobodyWatchesTracesEachKey) {
  v2 = v2Unwatched();
  makeDeaf();
  v1->srcIpIs(kP);
  v1->srcIpIs(kR);
  v1->dstIpRangeIs(kRange1);
  BothTraces traces;
  sm->handleSrcIp();
  sm->handleDstIpRange();
  EXPECT_EQ(traces.take(),
            (Lines{kMatch(8, "handleSrcIp()"), kMatch(8, "handleSrcIp() add src ip: 10.1.0.0/16"),
                   kMatch(8, "handleSrcIp() add src ip: 2001:db8::/32"),
                   kMatch(7, "handleSrcIp() return"), kMatch(8, "handleDstIpRange()"),
                   kMatch(8, "handleDstIpRange() add dst ip range:  IP range: 10.1.0.1-10.1.0.9"),
                   kMatch(7, "handleDstIpRange() return")}));
  EXPECT_TRUE(v2->srcIp(kP) && v2->srcIp(kR));
  EXPECT_EQ(v2->dstIpRange().size(), 1U);
  EXPECT_TRUE(marked());
}

TEST_F(MatchAddresses, KeyedHandlersHaveNoEntryLine) {
  make();
  BothTraces traces;
  v1->srcIpIs(kP);
  v1->srcIpDel(kP);
  v1->dstIpIs(kR);
  v1->dstIpDel(kR);
  const std::string src = "handleSrcIp(const Norv::IpGenPrefix&)";
  const std::string dst = "handleDstIp(const Norv::IpGenPrefix&)";
  EXPECT_EQ(traces.take(),
            (Lines{kMatch(6, src + " add src ip: 10.1.0.0/16"), kMatch(7, src + " return"),
                   kMatch(6, src + " remove src ip: 10.1.0.0/16"), kMatch(7, src + " return"),
                   kMatch(6, dst + " add dst ip: 2001:db8::/32"), kMatch(7, dst + " return"),
                   kMatch(6, dst + " remove dst ip: 2001:db8::/32"), kMatch(7, dst + " return")}));
}

TEST_F(MatchAddresses, ARangePrintsWithItsLabelSoThatTwoBlanksPrecedeIt) {
  make();
  BothTraces traces;
  v1->srcIpRangeIs(kRange1);
  v1->srcIpRangeDel(kRange1);
  v1->dstIpRangeIs(kRange1);
  v1->dstIpRangeDel(kRange1);
  const std::string src = "handleSrcIpRange(const VelaL3::VelaIpRange&)";
  const std::string dst = "handleDstIpRange(const VelaL3::VelaIpRange&)";
  EXPECT_EQ(traces.take(),
            (Lines{
                kMatch(6, src + " add src ip range:  IP range: 10.1.0.1-10.1.0.9"),
                kMatch(7, src + " return"),
                kMatch(6, src + " remove src ip range:  IP range: 10.1.0.1-10.1.0.9"),
                kMatch(7, src + " return"),
                kMatch(6, dst + " add dst ip range:  IP range: 10.1.0.1-10.1.0.9"),
                kMatch(7, dst + " return"),
                kMatch(6, dst + " remove dst ip range:  IP range: 10.1.0.1-10.1.0.9"),
                kMatch(7, dst + " return"),
            }));
}

TEST_F(MatchAddresses, WalksTraceTheirAdditionsAndRemovalsAtTheLevelOfEntryLines) {
  makeDeaf();
  v1->srcIpIs(kP);
  v2->srcIpIs(kR);
  v1->dstIpIs(kP);
  v2->dstIpIs(kR);
  v1->srcIpRangeIs(kRange1);
  v2->srcIpRangeIs(kStaleRange);
  v1->dstIpRangeIs(kRange1);
  v2->dstIpRangeIs(kStaleRange);
  BothTraces traces;
  sm->handleSrcIp();
  sm->handleDstIp();
  EXPECT_EQ(
      traces.take(),
      (Lines{kMatch(8, "handleSrcIp()"), kMatch(8, "handleSrcIp() remove src ip: 2001:db8::/32"),
             kMatch(8, "handleSrcIp() add src ip: 10.1.0.0/16"), kMatch(7, "handleSrcIp() return"),
             kMatch(8, "handleDstIp()"), kMatch(8, "handleDstIp() remove dst ip: 2001:db8::/32"),
             kMatch(8, "handleDstIp() add dst ip: 10.1.0.0/16"),
             kMatch(7, "handleDstIp() return")}));
  sm->handleSrcIpRange();
  sm->handleDstIpRange();
  const std::string stale = " IP range: 10.9.0.1-10.9.0.9";
  const std::string range = " IP range: 10.1.0.1-10.1.0.9";
  EXPECT_EQ(traces.take(),
            (Lines{kMatch(8, "handleSrcIpRange()"),
                   kMatch(8, "handleSrcIpRange() remove src ip range: " + stale),
                   kMatch(8, "handleSrcIpRange() add src ip range: " + range),
                   kMatch(7, "handleSrcIpRange() return"), kMatch(8, "handleDstIpRange()"),
                   kMatch(8, "handleDstIpRange() remove dst ip range: " + stale),
                   kMatch(8, "handleDstIpRange() add dst ip range: " + range),
                   kMatch(7, "handleDstIpRange() return")}));
}

TEST_F(MatchAddresses, MarksTheCookieWhenItIsMadeIfThereIsAnythingToMirror) {
  sm = VelaPolicyMonitor::policyTranslateMatchSmFactory(v1, v2, cookie);
  EXPECT_FALSE(marked());
  sm.reset();
  v1->srcIpIs(kP);
  const auto fresh = VelaL3V2::VelaMatchConfig::VelaMatchConfigIs();
  sm = VelaPolicyMonitor::policyTranslateMatchSmFactory(v1, fresh, cookie);
  EXPECT_TRUE(marked());
}

TEST_F(MatchAddresses, WithoutVersionOneEveryAddressGoes) {
  v2->srcIpIs(kP);
  v2->dstIpRangeIs(kRange2);
  sm = VelaPolicyMonitor::policyTranslateMatchSmFactory(nullptr, v2, cookie);
  EXPECT_TRUE(v2->srcIp().empty());
  EXPECT_TRUE(v2->dstIpRange().empty());
  EXPECT_TRUE(marked());
  v2->srcIpIs(kP);
  sm->handleSrcIp(kP);
  EXPECT_TRUE(v2->srcIp().empty());
}

TEST_F(MatchAddresses, WithoutVersionTwoARemovalIsHarmless) {
  sm = VelaPolicyMonitor::policyTranslateMatchSmFactory(v1, nullptr, nullptr);
  sm->handleSrcIp(kP);
  sm->handleSrcIpRange(kRange1);
  EXPECT_TRUE(sm->initialized());
}

using MatchAddressesDeathTest = MatchAddresses;

TEST_F(MatchAddressesDeathTest, WithoutVersionTwoAnAdditionStopsTheProcess) {
  v1->srcIpIs(kP);
  EXPECT_DEATH(VelaPolicyMonitor::policyTranslateMatchSmFactory(v1, nullptr, cookie),
               "handleSrcIp\\(\\): assertion \"entity != nullptr\" failed: .*built without");
}

}  // namespace
}  // namespace PolicyTests
