#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "change/ChangeReader.h"
#include "data/TreeWriter.h"
#include "session/Session.h"
#include "state/StateFolder.h"
#include "text/SourceText.h"

namespace HostTests {

/// Version 1 with the records, as a document.
inline std::string version1Of(const Host::Trees& trees) {
  Host::TextSink sink;
  Host::JsonWriter json(sink, Host::Layout::compact);
  json.openObject();
  for (const Host::Node* const top : Host::Schema::instance().tops()) {
    if (!top->state) {
      Host::TreeWriter(json, Host::Content::configuration).container(*top, trees);
    }
  }
  json.closeObject();
  json.endLine();
  return sink.text();
}

/// The file system, but nobody waits for the disk.
class QuickFiles : public Host::Files {
 public:
  void sync(int /*descriptor*/, const std::string& /*file*/) override {}
  void syncFolder(const std::string& /*folder*/) override {}

  static QuickFiles& instance() {
    static QuickFiles files;
    return files;
  }
};

/// What an agent does with a state folder, from its start to its end, which comes without warning.
class StateRun {
 public:
  /// Snapshots are written as soon as there is anything to write, and are tried again at once.
  static constexpr Host::StateFolder::Settings kEager{0, std::chrono::milliseconds(0), false};

  explicit StateRun(const std::string& folder, Host::Files& files = QuickFiles::instance(),
                    Host::StateFolder::Settings settings = kEager)
      : state(
            folder, [this](const std::string& text) { said += text + "\n"; }, settings, files) {
    if (state.hasState()) {
      state.load(trees);
    } else {
      state.create(trees);
    }
    translation.start();
    session.addLedger(state);
  }

  /// The error that the line is answered with; empty: none.
  std::string apply(const std::string& line) {
    const Host::SourceText source("line", line);
    Host::Change change;
    EXPECT_TRUE(reader.read(source.text(), change).empty()) << line;
    return session.apply(change).value_or("");
  }
  std::string sync() { return state.sync().value_or(""); }
  std::string version1() const { return version1Of(trees); }

  std::string said;
  Host::Trees trees;
  Host::StateFolder state;
  Host::VirtualClock clock{1};
  Host::Translation translation{trees};
  Host::Session session{trees, translation, clock};
  Host::ChangeReader reader;
};

/// A line for a fresh tree, or for what the lines of lower numbers have made of it.
inline std::string lineOf(int number) {
  const std::string time = R"({"time":)" + std::to_string(number) + ".25,";
  const std::string device = "/vela-l3:policy-source/policy-set[device-name='fw1']";
  const std::string rule = device + "/policy[vrf-name='red']/rule[priority='" +
                           std::to_string(10000 + number % 7) + "']";
  switch (number % 5) {
    case 0:
      return time +
             R"("update":[{"path":"/vela-policy-monitor:status/device-policy-list)"
             R"([device-name='fw1']/net-vrf-name-by-vrf[vrf-name='red']/net-vrf-name",)"
             R"("value":"net-)" +
             std::to_string(number) + R"("}]})";
    case 1:
      return time + R"("update":[{"path":")" + rule + R"(","value":{"origin":[{"name":"a",)" +
             R"("tags":")" + std::to_string(number) + R"("}]}}],"control":"initialize"})";
    case 2:
      return time + R"("replace":[{"path":")" + device + R"(/policy[vrf-name='blue']","value":{)" +
             R"("rule":[{"priority":)" + std::to_string(20000 + number) + R"(}]}}],)" +
             R"("signal":false})";
    case 3:
      return time + R"("delete":[")" + device + R"(/policy[vrf-name='blue']/rule"],"notify":[")" +
             device + R"(/policy"]})";
    default:
      return time + R"("update":[{"path":")" + rule +
             R"(/origin[name='b']/match","value":{"dst-ip":["10.)" + std::to_string(number) +
             R"(.0.0/16"]}}]})";
  }
}

}  // namespace HostTests
