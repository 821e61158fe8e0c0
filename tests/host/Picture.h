#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "change/PathReader.h"
#include "data/TreeCursor.h"
#include "data/TreeWriter.h"
#include "observe/Event.h"

namespace HostTests {

/// Version 2 and the convergence flags as JSON; what else is in the monitor's records is left out.
inline std::string printed(const Host::Trees& trees) {
  Host::TextSink sink;
  Host::JsonWriter json(sink, Host::Layout::compact);
  json.openObject();
  for (const Host::Node* const top : Host::Schema::instance().tops()) {
    if (top->state) {
      Host::TreeWriter(json).container(*top, trees);
    }
  }
  json.closeObject();
  json.endLine();
  std::map<std::string, std::string> flags;
  for (const auto& [device, record] : trees.status->devicePolicyList()) {
    flags[Kel::textOf(device)] =
        Kel::textOf(record->policyConverge()) + " " + Kel::textOf(record->serviceDeviceConverge());
  }
  std::string text = sink.text();
  for (const auto& [device, both] : flags) {
    text += device + ": " + both + "\n";
  }
  return text;
}

/// What somebody who knows nothing but the events makes of them: trees of its own. An event that
/// does not fit what was told before, or that changes nothing, is a failure.
class Picture : public Host::EventReceiver {
 public:
  void event(const Host::Event& event) override {
    using Kind = Host::Event::Kind;
    ++events_;
    Host::TreePath path;
    ASSERT_TRUE(reader_.read(event.path, path)) << event.path << ": " << reader_.why();
    Host::Touched touched;
    Host::TreeCursor cursor(trees_, touched);
    const std::span<const Host::OwnedStep> steps = path;
    const Host::Node& node = *path.back().node;
    ASSERT_TRUE(cursor.go(steps.first(steps.size() - 1))) << event.path << " stands on nothing";
    const void* const key = path.back().keyPlace();
    const void* const there = cursor.find(node, key);
    if (event.kind == Kind::set) {
      Host::ScalarReader scalars;
      Kel::AnyValue value(*node.type);
      const bool quoted = event.value.starts_with('"');
      const std::string_view raw =
          quoted ? event.value.substr(1, event.value.size() - 2) : event.value;
      const bool boolean = raw == "true" || raw == "false";
      ASSERT_TRUE(scalars.read(node,
                               {quoted    ? Host::JsonKind::text
                                : boolean ? Host::JsonKind::boolean
                                          : Host::JsonKind::number,
                                raw},
                               value.get()))
          << event.path << " " << event.value << ": " << scalars.why();
      const std::string leaf(event.path);
      EXPECT_NE(set_[leaf], event.value) << leaf << " was set to what it was";
      set_[leaf] = event.value;
      cursor.put(node, nullptr, value.get());
    } else if (event.kind == Kind::add) {
      EXPECT_EQ(there, nullptr) << event.path << " was there";
      if (node.kind == Host::Node::Kind::leafList || node.kind == Host::Node::Kind::records) {
        cursor.put(node, key, nullptr);
      } else {
        cursor.make(steps);
      }
    } else {
      EXPECT_NE(there, nullptr) << event.path << " was not there";
      cursor.erase(node, key);
      std::erase_if(set_, [&](const auto& each) { return each.first.starts_with(event.path); });
    }
  }

  std::string text() const { return printed(trees_); }
  std::size_t events() const { return events_; }

 private:
  Host::Trees trees_;
  Host::PathReader reader_{Host::Content::everything};
  std::map<std::string, std::string> set_;
  std::size_t events_ = 0;
};

/// The events as lines of text: "add /...", "set /... value".
class EventLines : public Host::EventReceiver {
 public:
  void event(const Host::Event& event) override {
    using Kind = Host::Event::Kind;
    lines.push_back(std::string(event.kind == Kind::add      ? "add "
                                : event.kind == Kind::remove ? "remove "
                                                             : "set ") +
                    std::string(event.path) + (event.kind == Kind::set ? " " : "") +
                    std::string(event.value));
  }
  /// What was told since the last call.
  std::vector<std::string> take() { return std::exchange(lines, {}); }

  std::vector<std::string> lines;
};

}  // namespace HostTests
