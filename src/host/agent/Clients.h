#pragma once

#include <list>

#include "agent/Client.h"
#include "agent/Listener.h"

namespace Host {

/// All who talk to the agent.
class Clients : public Loop::Source {
 public:
  Clients(const Listener& listener, Loop& loop);
  ~Clients() override;

  /// Lets in who wants to.
  void ready(std::uint32_t events) override;
  /// Answers lines, of each for a little while.
  void work(Answerer& answerer);
  /// Sends the answers, and lets go of those who have done.
  void send(Answerer& answerer);
  /// Sends the answers that there are to all who take them; waits for them a little.
  void farewell(Answerer& answerer);

  /// Whether there are lines to be answered at once.
  bool isBusy() const;
  std::size_t size() const { return all_.size(); }
  /// In bytes: what has come and was not answered, and answers that were not taken.
  std::size_t waitingInput() const;
  std::size_t waitingOutput() const;

 private:
  void letGo(Answerer& answerer);

  const Listener& listener_;
  Loop& loop_;
  std::list<Client> all_;
  bool full_ = false;  // there are no descriptors for more
};

}  // namespace Host
