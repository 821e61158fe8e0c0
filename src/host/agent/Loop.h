#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "protocol/Descriptor.h"

namespace Host {

/// The event loop: tells the owners of descriptors that something can be done with them.
class Loop {
 public:
  /// Who owns a descriptor.
  class Source {
   public:
    Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    virtual ~Source() = default;

    /// `events` as epoll has them. No source is removed from the loop inside of this.
    virtual void ready(std::uint32_t events) = 0;
  };

  /// Raises std::runtime_error, as does everything below.
  Loop();

  /// `source` lives until it is removed.
  void add(int descriptor, std::uint32_t events, Source& source);
  void change(int descriptor, std::uint32_t events, Source& source);
  void remove(int descriptor);

  /// Waits, at most this long (none: without end), and tells every source that is ready.
  void turn(std::optional<std::chrono::milliseconds> atMost);

 private:
  void control(int operation, int descriptor, std::uint32_t events, Source* source);

  Descriptor epoll_;
};

/// `what`, and what errno says.
[[noreturn]] void failWith(std::string_view what);

}  // namespace Host
