#include "policy/MatchWorld.h"

namespace PolicyTests {
namespace {

/// The protocols and the destination layer-4 applications of a match, and the machine's own life.
class MatchProtocols : public MatchWorld {};

TEST_F(MatchProtocols, ProtocolsApplicationsAndRangesAreFollowedFieldByField) {
  make();
  v1->l3AppIs(6);
  v1->dstL4AppIs({443, 6});
  v1->dstL4AppRangeIs({8000, 8080, 17});
  EXPECT_TRUE(v2->l3App(6));
  EXPECT_TRUE(v2->dstL4App({443, 6}));
  EXPECT_TRUE(v2->dstL4AppRange({8000, 8080, 17}));
  v1->l3AppDel(6);
  v1->dstL4AppDel({443, 6});
  v1->dstL4AppRangeDel({8000, 8080, 17});
  EXPECT_TRUE(v2->l3App().empty());
  EXPECT_TRUE(v2->dstL4App().empty());
  EXPECT_TRUE(v2->dstL4AppRange().empty());
}

TEST_F(MatchProtocols, EveryKeyedHandlerMarks) {
  make();
  v1->l3AppIs(6);
  EXPECT_TRUE(marked());
  v1->dstL4AppIs({443, 6});
  EXPECT_TRUE(marked());
  v1->dstL4AppRangeIs({1, 2, 6});
  EXPECT_TRUE(marked());
}

TEST_F(MatchProtocols, TheSetsAreReconciledInTheirOrderAndEachIsPrunedBeforeItGrows) {
  v2->srcIpIs(IpGenPrefix("1.0.0.0/8"));
  v2->srcIpRangeIs({IpGenAddr("2.0.0.1"), IpGenAddr("2.0.0.2")});
  v2->dstIpIs(IpGenPrefix("3.0.0.0/8"));
  v2->dstIpRangeIs({IpGenAddr("4.0.0.1"), IpGenAddr("4.0.0.2")});
  v2->l3AppIs(5);
  v1->srcIpIs(IpGenPrefix("11.0.0.0/8"));
  v1->srcIpRangeIs({IpGenAddr("12.0.0.1"), IpGenAddr("12.0.0.2")});
  v1->dstIpIs(IpGenPrefix("13.0.0.0/8"));
  v1->dstIpRangeIs({IpGenAddr("14.0.0.1"), IpGenAddr("14.0.0.2")});
  v1->l3AppIs(15);
  v1->dstL4AppIs({16, 6});
  v1->dstL4AppRangeIs({17, 18, 6});
  noted();
  sm = VelaPolicyMonitor::policyTranslateMatchSmFactory(v1, v2, cookie);
  EXPECT_EQ(noted(), (Lines{"-1.0.0.0/8", "+11.0.0.0/8", "- IP range: 2.0.0.1-2.0.0.2",
                            "+ IP range: 12.0.0.1-12.0.0.2", "-3.0.0.0/8", "+13.0.0.0/8",
                            "- IP range: 4.0.0.1-4.0.0.2", "+ IP range: 14.0.0.1-14.0.0.2", "-5",
                            "+15", "attribute " + std::to_string(MatchV2::dstL4AppAttr.id),
                            "attribute " + std::to_string(MatchV2::dstL4AppRangeAttr.id)}));
  EXPECT_TRUE(cookie->updated());
}

TEST_F(MatchProtocols, OfAnInitializationOverNothingTheLinesAreThoseOfSevenWalks) {
  BothTraces traces;
  sm = VelaPolicyMonitor::policyTranslateMatchSmFactory(v1, v2, cookie);
  EXPECT_EQ(
      traces.take(),
      (Lines{kMatch(8, "handleInitialized()"), kMatch(8, "handleSrcIp()"),
             kMatch(7, "handleSrcIp() return"), kMatch(8, "handleSrcIpRange()"),
             kMatch(7, "handleSrcIpRange() return"), kMatch(8, "handleDstIp()"),
             kMatch(7, "handleDstIp() return"), kMatch(8, "handleDstIpRange()"),
             kMatch(7, "handleDstIpRange() return"), kMatch(8, "handleL3App()"),
             kMatch(7, "handleL3App() return"), kMatch(8, "handleDstL4App()"),
             kMatch(7, "handleDstL4App() return"), kMatch(8, "handleDstL4AppRange()"),
             kMatch(7, "handleDstL4AppRange() return"), kMatch(7, "handleInitialized() return")}));
  EXPECT_FALSE(cookie->updated());
}

TEST_F(MatchProtocols, SourceApplicationsAreIgnored) {
  make();
  BothTraces traces;
  v1->srcL4AppIs({80, 6});
  v1->srcL4AppRangeIs({80, 90, 6});
  EXPECT_EQ(traces.take(), Lines{});
  EXPECT_EQ(noted(), Lines{});
  EXPECT_FALSE(marked());
}

TEST_F(MatchProtocols, OfAnApplicationTheOnlyLinesAreThoseOfEntryAndExit) {
  make();
  BothTraces traces;
  v1->dstL4AppIs({443, 6});
  v1->dstL4AppRangeIs({1, 2, 6});
  v1->dstL4AppDel({443, 6});
  v1->dstL4AppRangeDel({1, 2, 6});
  const std::string app = "handleDstL4App(VelaL3::VelaL4App)";
  const std::string range = "handleDstL4AppRange(const VelaL3::VelaL4AppRange&)";
  EXPECT_EQ(traces.take(),
            (Lines{kMatch(8, app), kMatch(7, app + " return"), kMatch(8, range),
                   kMatch(7, range + " return"), kMatch(8, app), kMatch(7, app + " return"),
                   kMatch(8, range), kMatch(7, range + " return")}));
}

TEST_F(MatchProtocols, OfAWalkOverApplicationsThatDifferTheOnlyLinesAreThoseOfEntryAndExit) {
  makeDeaf();
  v1->dstL4AppIs({443, 6});
  v2->dstL4AppIs({80, 6});
  v1->dstL4AppRangeIs({1, 2, 6});
  v2->dstL4AppRangeIs({3, 4, 6});
  BothTraces traces;
  sm->handleDstL4App();
  EXPECT_TRUE(marked());
  sm->handleDstL4AppRange();
  EXPECT_TRUE(marked());
  EXPECT_EQ(traces.take(),
            (Lines{kMatch(8, "handleDstL4App()"), kMatch(7, "handleDstL4App() return"),
                   kMatch(8, "handleDstL4AppRange()"), kMatch(7, "handleDstL4AppRange() return")}));
  EXPECT_TRUE(v2->dstL4App({443, 6}) && !v2->dstL4App({80, 6}));
  EXPECT_TRUE(v2->dstL4AppRange({1, 2, 6}) && !v2->dstL4AppRange({3, 4, 6}));
}

TEST_F(MatchProtocols, OfAProtocolTheKeyedHandlerHasNoEntryLine) {
  make();
  BothTraces traces;
  v1->l3AppIs(6);
  v1->l3AppDel(6);
  const std::string form = "handleL3App(Norv::IpProto)";
  EXPECT_EQ(traces.take(),
            (Lines{kMatch(6, form + " add ip proto: 6"), kMatch(7, form + " return"),
                   kMatch(6, form + " remove ip proto: 6"), kMatch(7, form + " return")}));
}

TEST_F(MatchProtocols, OfProtocolsAWalkTracesItsDecisionsAtTheLevelOfDecisions) {
  makeDeaf();
  v1->l3AppIs(6);
  v2->l3AppIs(17);
  BothTraces traces;
  sm->handleL3App();
  EXPECT_EQ(traces.take(),
            (Lines{kMatch(8, "handleL3App()"), kMatch(6, "handleL3App() remove ip proto: 17"),
                   kMatch(6, "handleL3App() add ip proto: 6"), kMatch(7, "handleL3App() return")}));
  EXPECT_TRUE(marked());
}

TEST_F(MatchProtocols, AProtocolThatIsOnNeitherSideIsRemovedInVainAndMarks) {
  make();
  sm->handleL3App(6);
  EXPECT_TRUE(v2->l3App().empty());
  EXPECT_EQ(noted(), Lines{});
  EXPECT_TRUE(marked());
}

TEST_F(MatchProtocols, WalksOverEqualSetsDoNotMark) {
  v1->l3AppIs(6);
  v1->dstL4AppIs({443, 6});
  v1->dstL4AppRangeIs({1, 2, 6});
  make();
  sm->handleL3App();
  sm->handleDstL4App();
  sm->handleDstL4AppRange();
  EXPECT_FALSE(marked());
}

TEST_F(MatchProtocols, ASecondInitializationOverEqualMatchesChangesNothing) {
  v1->l3AppIs(6);
  make();
  sm->handleInitialized();
  EXPECT_EQ(noted(), Lines{});
  EXPECT_FALSE(marked());
}

TEST_F(MatchProtocols, ItsEndLeavesVersionTwoAsItIsAndNoSubscriber) {
  v1->l3AppIs(6);
  make();
  EXPECT_EQ(v1->publisher().subscriberCount(), 1U);
  BothTraces traces;
  sm.reset();
  EXPECT_EQ(traces.take(), Lines{});
  EXPECT_TRUE(v2->l3App(6));
  EXPECT_EQ(v1->publisher().subscriberCount(), 0U);
}

TEST_F(MatchProtocols, WhileSwitchedOffNothingIsFollowedAndNothingIsReplayed) {
  make();
  sm->hasNotificationActiveIs(false);
  v1->l3AppIs(6);
  sm->hasNotificationActiveIs(true);
  EXPECT_FALSE(v2->l3App(6));
  v1->l3AppIs(17);
  EXPECT_TRUE(v2->l3App(17));
}

TEST_F(MatchProtocols, WithoutCookieChangesAreFollowed) {
  sm = VelaPolicyMonitor::policyTranslateMatchSmFactory(v1, v2, nullptr);
  v1->l3AppIs(6);
  v2->l3AppIs(17);
  sm->handleL3App();
  EXPECT_EQ(keys(v2->l3App()), Lines{"6"});
}

}  // namespace
}  // namespace PolicyTests
