#pragma once

#include <chrono>
#include <list>

#include "agent/Client.h"
#include "agent/Engine.h"
#include "protocol/Request.h"

namespace Host {

/// Those who wait for the translation to converge. Whoever waits is held.
class Waits {
 public:
  explicit Waits(const Engine& engine) : engine_(engine) {}

  /// Answers at once when there is nothing to wait for.
  void add(Client& from, std::size_t number, const Request& request);
  /// `from` is about to end.
  void drop(const Client& from);
  /// Answers those whose wait is over. Looks at the trees only when something was applied since.
  void look();
  /// How long the loop may sleep without a look; none: as long as it likes.
  std::optional<std::chrono::milliseconds> patience() const;

 private:
  using Clock = std::chrono::steady_clock;
  struct Wait {
    Client* from;
    std::size_t number;
    std::optional<std::string> device;
    std::optional<Clock::time_point> end;
  };

  bool answered(const Wait& wait, bool changed);

  const Engine& engine_;
  std::list<Wait> waits_;
  std::size_t looked_ = 0;  // the engine's generation
};

}  // namespace Host
