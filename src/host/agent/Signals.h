#pragma once

#include <csignal>

#include "agent/Loop.h"

namespace Host {

/// The signals that are meant for the agent, as events of the loop. As long as this lives they do
/// nothing else; a signal that came before the loop turned is not lost. A write to what nobody
/// reads any more, or to a file that may not grow, is an error of the write and nothing else.
///
/// To be made before there are other threads, which would get the signals.
class Signals : public Loop::Source {
 public:
  Signals();
  ~Signals() override;

  void follow(Loop& loop);
  void ready(std::uint32_t events) override;

  /// SIGTERM or SIGINT has come: its name; else null.
  const char* stop() const { return stop_; }
  /// Whether SIGHUP has come since this was asked.
  bool takeReload() { return std::exchange(reload_, false); }

 private:
  sigset_t before_{};
  void (*pipeBefore_)(int) = nullptr;
  void (*sizeBefore_)(int) = nullptr;
  Descriptor descriptor_;
  const char* stop_ = nullptr;
  bool reload_ = false;
};

}  // namespace Host
