#include "observe/ChangeFeed.h"

#include "Kel/Observer.h"
#include "change/ChangeReader.h"
#include "host/Picture.h"
#include "host/RandomLines.h"
#include "session/Session.h"
#include "text/SourceText.h"

namespace HostTests {
namespace {

using Lines = std::vector<std::string>;

class ChangeFeed : public testing::Test {
 protected:
  Host::Trees trees;
  Host::VirtualClock clock{12.5};
  Host::Translation translation{trees};
  Host::Session session{trees, translation, clock};
  Host::ChangeReader reader;
  Host::ChangeFeed feed{trees};

  void apply(const std::string& line) {
    Host::Change change;
    const std::string padded = line + std::string(Host::SourceText::kPadding, '\0');
    const auto faults = reader.read(std::string_view(padded).substr(0, line.size()), change);
    ASSERT_TRUE(faults.empty()) << line << "\n" << faults.front().message;
    session.apply(change);
  }
  static Host::TreePath pathOf(const std::string& text) {
    Host::PathReader paths(Host::Content::everything);
    Host::TreePath path;
    EXPECT_TRUE(text.empty() || paths.read(text, path)) << paths.why();
    return path;
  }
  /// One device with one policy, one rule and one network VRF.
  void fill() {
    apply(
        R"({"control":"start","update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name=fw1]","value":{"net-vrf-name-by-vrf":[{"vrf-name":"red","net-vrf-name":"net-red"}]}},
{"path":"/vela-l3:policy-source/policy-set[device-name=fw1]/policy[vrf-name=red]/rule[priority=20000]/origin[name=web]","value":{"action":"drop","match":{"dst-ip":["10.1.0.0/16"]}}},
{"path":"/vela-l3:service-device-source/service-device[device-name=fw1]/vrf[vrf-name=red]/l3-intf[address='10.0.0.1']","value":{"reachable-subnet":["10.2.0.0/16"]}}]})");
  }
};

constexpr const char* kOrigin =
    "/vela-l3:policy-source/policy-set[device-name=fw1]/policy[vrf-name=red]/rule[priority=20000]"
    "/origin[name=web]";

TEST_F(ChangeFeed, TellsFirstWhatThereIs) {
  fill();
  EventLines told;
  feed.add(told, {});
  const std::string set = "/vela-l3v2:policy-source/policy-set[device-name='fw1']";
  const std::string origin =
      set + "/policy[net-vrf-name='net-red']/rule[priority='20000']/origin[name='web']";
  const std::string device = "/vela-l3v2:service-device-source/service-device[device-name='fw1']";
  const std::string net = device + "/net-vrf[net-vrf-name='net-red']";
  const std::string record = "/vela-policy-monitor:status/device-policy-list[device-name='fw1']";
  EXPECT_EQ(told.lines,
            (Lines{"add " + set,
                   "add " + set + "/policy[net-vrf-name='net-red']",
                   "set " + set + "/policy[net-vrf-name='net-red']/timestamp \"12.500000\"",
                   "add " + set + "/policy[net-vrf-name='net-red']/rule[priority='20000']",
                   "add " + origin,
                   "set " + origin + "/tags \"\"",
                   "set " + origin + "/action \"drop\"",
                   "set " + origin + "/log-enabled false",
                   "add " + origin + "/match",
                   "add " + origin + "/match/dst-ip[.='10.1.0.0/16']",
                   "add " + device,
                   "set " + device + "/traffic-inspection \"\"",
                   "add " + net,
                   "set " + net + "/vrf-name \"red\"",
                   "set " + net + "/timestamp \"12.500000\"",
                   "add " + net + "/l3-intf[address='10.0.0.1']",
                   "add " + net + "/l3-intf[address='10.0.0.1']/reachable-subnet[.='10.2.0.0/16']",
                   "add " + record,
                   "set " + record + "/policy-converge true",
                   "set " + record + "/service-device-converge true"}));
}

TEST_F(ChangeFeed, TellsEachChangeOnceAsItHappens) {
  fill();
  EventLines told;
  feed.add(told, {});
  told.take();
  clock.timeIs(13);
  apply(R"({"update":[{"path":")" + std::string(kOrigin) +
        R"(","value":{"log":true,"tags":"","match":{"dst-ip":["10.1.0.0/16","10.3.0.0/16"]}}}]})");
  const std::string policy =
      "/vela-l3v2:policy-source/policy-set[device-name='fw1']/policy[net-vrf-name='net-red']";
  const std::string origin = policy + "/rule[priority='20000']/origin[name='web']";
  EXPECT_EQ(told.take(), (Lines{"set " + origin + "/log-enabled true",
                                "add " + origin + "/match/dst-ip[.='10.3.0.0/16']",
                                "set " + policy + "/timestamp \"13.000000\""}));
  apply(R"({"delete":[")" + std::string(kOrigin) + R"("],"signal":false})");
  EXPECT_EQ(told.take(), (Lines{"remove " + origin + "/match", "remove " + origin}));
}

TEST_F(ChangeFeed, LooksAgainWhereAnotherObserverFillsAnEntryOrTakesItAway) {
  fill();
  EventLines told;
  feed.add(told, pathOf("/vela-l3v2:policy-source"));
  told.take();
  // One observer fills what is created, one takes it away again at once.
  const Kel::Observer filling(*trees.policyV2, [&](Kel::AttrId /*id*/, const void* /*key*/) {
    if (const auto set = trees.policyV2->policySet(Vela::DeviceName("own"))) {
      set->policyIs("net-own")->ruleIs(VelaL3V2::VelaPriority(20000));
    }
  });
  EventLines late;
  feed.add(late, {});  // subscribes behind the observer
  late.take();
  trees.policyV2->policySetIs(Vela::DeviceName("own"));
  const std::string set = "/vela-l3v2:policy-source/policy-set[device-name='own']";
  const Lines expected{"add " + set, "add " + set + "/policy[net-vrf-name='net-own']",
                       "add " + set + "/policy[net-vrf-name='net-own']/rule[priority='20000']"};
  EXPECT_EQ(told.take(), expected);
  EXPECT_EQ(late.take(), expected);
  const Kel::Observer taking(*trees.policyV2, [&](Kel::AttrId /*id*/, const void* /*key*/) {
    trees.policyV2->policySetDel(Vela::DeviceName("short"));
  });
  EventLines last;
  feed.add(last, pathOf("/vela-l3v2:policy-source/policy-set[device-name='short']"));
  trees.policyV2->policySetIs(Vela::DeviceName("short"));
  EXPECT_EQ(last.take(), Lines{});
}

TEST_F(ChangeFeed, DoesNotTellOfWritesOfAnEqualValue) {
  fill();
  EventLines told;
  feed.add(told, {});
  told.take();
  const auto origin = trees.policyV2->policySet(Vela::DeviceName("fw1"))
                          ->policy("net-red")
                          ->rule(VelaL3V2::VelaPriority(20000))
                          ->origin("web");
  origin->actionIs(VelaL3V2::VelaAction::drop);
  origin->tagsIs("");
  EXPECT_EQ(told.take(), Lines{});
  origin->tagsIs("a \"b\"");
  EXPECT_EQ(told.take(), Lines{R"(set /vela-l3v2:policy-source/policy-set[device-name='fw1'])"
                               R"(/policy[net-vrf-name='net-red']/rule[priority='20000'])"
                               R"(/origin[name='web']/tags "a \"b\"")"});
}

TEST_F(ChangeFeed, NarrowedToAPathTellsOnlyWhatIsThere) {
  fill();
  const std::string policy =
      "/vela-l3v2:policy-source/policy-set[device-name='fw1']/policy[net-vrf-name='net-red']";
  const std::string rule = policy + "/rule[priority='20000']";
  EventLines stamp;
  feed.add(stamp, pathOf(policy + "/timestamp"));
  EventLines match;
  feed.add(match, pathOf(rule + "/origin[name='web']/match"));
  EventLines prefix;
  feed.add(prefix, pathOf(rule + "/origin[name='web']/match/dst-ip[.='10.1.0.0/16']"));
  EventLines rules;
  feed.add(rules, pathOf(policy + "/rule"));
  EXPECT_EQ(stamp.take(), Lines{"set " + policy + "/timestamp \"12.500000\""});
  EXPECT_EQ(match.take(),
            (Lines{"add " + rule + "/origin[name='web']/match",
                   "add " + rule + "/origin[name='web']/match/dst-ip[.='10.1.0.0/16']"}));
  EXPECT_EQ(prefix.take(),
            Lines{"add " + rule + "/origin[name='web']/match/dst-ip[.='10.1.0.0/16']"});
  EXPECT_EQ(rules.take().front(), "add " + rule);

  // Another device does not matter; the entry above the path takes along what was at it.
  clock.timeIs(14);
  trees.policyV2->policySetIs(Vela::DeviceName("fw2"))->policyIs("net-red")->timestampIs(14);
  trees.policyV2->policySetDel(Vela::DeviceName("fw1"));
  EXPECT_EQ(stamp.take(), Lines{"remove " + policy + "/timestamp"});
  EXPECT_EQ(match.take(), Lines{"remove " + rule + "/origin[name='web']/match"});
  EXPECT_EQ(prefix.take(),
            Lines{"remove " + rule + "/origin[name='web']/match/dst-ip[.='10.1.0.0/16']"});
  EXPECT_EQ(rules.take(), Lines{"remove " + rule});
}

TEST_F(ChangeFeed, SubscribesToNothingOnceNobodyWatches) {
  fill();
  EventLines one;
  EventLines two;
  EventLines three;
  EXPECT_EQ(feed.objects(), 0U);
  feed.add(one, {});
  const std::size_t all = feed.objects();
  EXPECT_EQ(all, 12U);  // three containers; below them 5, 3 and 1
  feed.add(two, {});
  EXPECT_EQ(feed.objects(), all);  // shared
  feed.add(three, pathOf("/vela-l3v2:policy-source/policy-set[device-name=fw1]/policy"));
  feed.remove(one);
  feed.remove(three);
  EXPECT_EQ(feed.objects(), all);
  feed.remove(two);
  feed.remove(two);
  EXPECT_EQ(feed.objects(), 0U);
  EXPECT_EQ(trees.policyV2->publisher().subscriberCount(), 0U);
  EXPECT_EQ(trees.serviceDeviceV2->publisher().subscriberCount(), 0U);
  EXPECT_EQ(trees.policyV2->policySet(Vela::DeviceName("fw1"))
                ->policy("net-red")
                ->publisher()
                .subscriberCount(),
            0U);
}

TEST_F(ChangeFeed, SaysWhyAPathCannotBeWatched) {
  EXPECT_EQ(Host::ChangeFeed::whyNot(pathOf("/vela-l3:policy-source/policy-set")),
            "nothing can be watched at /vela-l3:policy-source/policy-set: it is not the "
            "translation that writes it; watch version 2 or the convergence flags of the "
            "monitor's records");
  EXPECT_EQ(Host::ChangeFeed::whyNot(pathOf("/vela-policy-monitor:status")), "");
  const std::string device =
      "/vela-l3v2:service-device-source/service-device[device-name='fw1']/device-name";
  EXPECT_EQ(Host::ChangeFeed::whyNot(pathOf(device)),
            "a key never changes: watch the entry instead of " + device);
  EXPECT_EQ(Host::ChangeFeed::whyNot({}), "");
}

/// What was told, by path; nothing is known of how the paths hang together but their texts.
class Told : public Host::EventReceiver {
 public:
  void event(const Host::Event& event) override {
    if (event.kind != Host::Event::Kind::remove) {
      paths[std::string(event.path)] = event.value;
      return;
    }
    std::erase_if(paths, [&](const auto& each) {
      return each.first.starts_with(event.path) &&
             (each.first.size() == event.path.size() || each.first[event.path.size()] == '/');
    });
  }
  std::map<std::string, std::string> paths;
};

class RandomisedFeed : public ChangeFeed, public testing::WithParamInterface<unsigned> {};

TEST_P(RandomisedFeed, GivesWhoeverFollowsItTheStateAsItIsPrinted) {
  const std::string entry = "/vela-l3v2:policy-source/policy-set[device-name='fw1']";
  const std::string other = "/vela-l3v2:service-device-source/service-device[device-name='fw2']";
  const Lines narrowed{entry,
                       entry + "/policy",
                       entry + "/policy[net-vrf-name='net-1']/timestamp",
                       entry + "/policy[net-vrf-name='net-1']/rule[priority='20000']",
                       entry +
                           "/policy[net-vrf-name='net-1']/rule[priority='20000']"
                           "/origin[name='web']/match/dst-ip",
                       other +
                           "/net-vrf[net-vrf-name='net-2']/l3-intf[address='10.0.0.1']"
                           "/reachable-subnet[.='10.1.0.0/16']",
                       "/vela-policy-monitor:status"};
  Picture picture;
  feed.add(picture, {});
  std::vector<std::unique_ptr<Told>> told;
  for (const std::string& path : narrowed) {
    feed.add(*told.emplace_back(std::make_unique<Told>()), pathOf(path));
  }
  RandomLines lines(GetParam());
  std::string log;
  translation.start();
  for (int i = 0; i < 600; ++i) {
    const std::string line = lines.next();
    log += line + "\n";
    clock.timeIs(clock.time() + 1);
    ASSERT_NO_FATAL_FAILURE(apply(line));
    ASSERT_EQ(picture.text(), printed(trees)) << "seed " << GetParam() << ", the log:\n" << log;
    ASSERT_FALSE(HasFailure()) << "seed " << GetParam() << ", the log:\n" << log;
    for (std::size_t j = 0; j < narrowed.size(); ++j) {
      Told afresh;
      Host::ChangeFeed another(trees);
      another.add(afresh, pathOf(narrowed[j]));
      ASSERT_EQ(told[j]->paths, afresh.paths)
          << narrowed[j] << ", seed " << GetParam() << ", the log:\n"
          << log;
    }
    if (i % 100 == 50) {  // somebody who comes later learns the same
      Picture late;
      feed.add(late, {});
      EXPECT_EQ(late.text(), picture.text());
      feed.remove(late);
    }
  }
  EXPECT_GT(picture.events(), 300U);
}
INSTANTIATE_TEST_SUITE_P(Seed, RandomisedFeed, testing::Range(1U, 9U));

}  // namespace
}  // namespace HostTests
