#pragma once

#include <cstddef>
#include <list>
#include <memory>

#include "agent/Client.h"
#include "observe/ChangeFeed.h"
#include "protocol/Request.h"

namespace Host {

/// Those who watch the changes of version 2. A client that does not keep up is told so, and let go:
/// what waits for it may grow by Client::kMostWaiting behind its first picture, and no further.
class Watches {
 public:
  explicit Watches(const Trees& trees);
  Watches(const Watches&) = delete;
  Watches& operator=(const Watches&) = delete;
  ~Watches();

  /// Tells what there is, and from then on what changes.
  void add(Client& from, std::size_t number, const Request& request);
  /// `from` is about to end.
  void drop(const Client& from);
  /// Between two turns: lets go of those who do not keep up.
  void look();
  std::size_t size() const { return watches_.size(); }

 private:
  class Watch;
  template <class Condition>
  void endIf(Condition isOver);

  ChangeFeed feed_;
  std::list<std::unique_ptr<Watch>> watches_;
};

}  // namespace Host
