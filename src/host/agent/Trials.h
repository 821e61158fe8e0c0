#pragma once

#include <sys/types.h>

#include <chrono>
#include <list>

#include "agent/Client.h"
#include "agent/Engine.h"
#include "agent/Loop.h"

namespace Host {

/// Those who ask what a change line would do.
///
/// A child of the agent applies the line to its own copy of all memory, which costs no more than
/// what the line touches, says what has come of it through a pipe, and ends. It cannot touch
/// anything of the agent: its traces are silent and it has no journal. Whoever asks is held until
/// the answer is there; the agent goes on.
class Trials {
 public:
  Trials(Engine& engine, Loop& loop) : engine_(engine), loop_(loop) {}

  void add(Client& from, std::size_t number, const Change& change);
  /// `from` is about to end.
  void drop(const Client& from);
  /// Answers those whose trial is over.
  void look();
  /// How long the loop may sleep without a look; none: as long as it likes.
  std::optional<std::chrono::milliseconds> patience() const;

 private:
  using Clock = std::chrono::steady_clock;
  class Trial;

  Engine& engine_;
  Loop& loop_;
  std::list<Trial> trials_;
};

/// One child, and what it has said.
class Trials::Trial : public Loop::Source {
 public:
  static constexpr auto kLongest = std::chrono::seconds(30);

  /// Raises std::runtime_error when there can be no child.
  Trial(Client& from, std::size_t number, Engine& engine, const Change& change, Loop& loop);
  ~Trial() override;

  void ready(std::uint32_t events) override;
  bool isOf(const Client& client) const { return &client == &from_; }
  bool isOver() const { return over_ || Clock::now() >= end_; }
  void answer();
  Clock::time_point end() const { return end_; }

 private:
  Client& from_;
  const std::size_t number_;
  Loop& loop_;
  Descriptor pipe_;
  pid_t child_ = -1;
  std::string said_;
  bool over_ = false;
  const Clock::time_point end_ = Clock::now() + kLongest;
};

}  // namespace Host
