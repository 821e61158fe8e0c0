#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "Kel/Hash.h"
#include "Pario/Scope.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// To which device, VRF and rule a state machine belongs, for the trace.
///
/// **Why every machine knows it.** A trace of one device, VRF or rule must be possible, both while
/// it is written and when it is read. The lines do not tell: that of a prefix names neither its
/// rule nor its VRF. Nor does what ran before: a change of a prefix reaches the match machine
/// directly, and a machine has no way up. What was weighed:
///
/// - *A set of the machines in scope*, found by a walk from the roots: it must be kept true through
///   every replacement, and it does not help the reader of a trace that was written without one.
/// - *The context of the handlers that are running*: there is none when a low machine is told
/// first.
/// - *Names in every record*: as dear as the record itself.
///
/// So a machine is told at its construction, by the machine that owns it. Names become bits of
/// their hashes, since what is asked is only "is it this one?": 20 bits for a device, 21 for a VRF,
/// and the priority itself. Seven bytes of alignment 1: they lie in the gap behind the flags with
/// which every machine ends, so that no machine is larger for it. Of a thousand devices two agree
/// with a probability of a third, and one in a thousand has to share its lines with another one.
///
/// **Deciding** is one comparison of a masked word (Pario::Scope), before anything is formatted,
/// and in both traces; each binary record carries the word, so that the reader decides in the same
/// way. The hashes must not change between the library that writes and the program that reads.
///
/// **What belongs where.** The lines of a machine belong to its place; those of a keyed handler of
/// an upper machine to that of the key (OnDevice and its like, given to Handling). The lines that
/// a full walk writes belong to the machine that walks.
class TracePlace {
 public:
  static constexpr Pario::Place kDeviceMask = 0xf'ffff;
  static constexpr Pario::Place kVrfMask = Pario::Place{0x1f'ffff} << 20U;
  static constexpr Pario::Place kRuleMask = Pario::Place{0x7fff} << 41U;

  /// Nowhere in particular: what the roots are.
  TracePlace() noexcept = default;
  explicit TracePlace(Pario::Place bits) noexcept {
    std::memcpy(bytes_.data(), &bits, bytes_.size());  // little-endian
  }
  /// That of the machine that is making a child now.
  static TracePlace ofOwner() noexcept { return TracePlace(owner); }

  Pario::Place bits() const noexcept {
    // Two loads of four bytes that share one: a processor that has to put eight bytes together from
    // smaller stores waits for them.
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    std::memcpy(&low, bytes_.data(), sizeof low);
    std::memcpy(&high, bytes_.data() + 3, sizeof high);
    return low | Pario::Place{high} << 24U;
  }
  template <class Part>
  TracePlace with(const Part& part) const noexcept {
    return TracePlace(bits() | part.bits());
  }

  /// While it lives, what is made is made by the machine with this place.
  class Making {
   public:
    explicit Making(const TracePlace& place) noexcept : before_(owner) { owner = place.bits(); }
    Making(const Making&) = delete;
    Making& operator=(const Making&) = delete;
    ~Making() { owner = before_; }

   private:
    const Pario::Place before_;
  };

 private:
  static inline constinit thread_local Pario::Place owner = 0;

  std::array<unsigned char, 7> bytes_{};
};

/// The parts of a place, from what they are in the configuration. Hashed when somebody asks.
struct OnDevice {
  std::string_view name;
  Pario::Place bits() const noexcept { return 1 + Kel::hashOf(name) % TracePlace::kDeviceMask; }
};
struct OnVrf {
  std::string_view name;
  Pario::Place bits() const noexcept {
    return Pario::Place{1 + Kel::hashOf(name) % (TracePlace::kVrfMask >> 20U)} << 20U;
  }
};
struct OnRule {
  std::uint32_t priority;
  /// Priorities beyond the range that version 1 has share the last number.
  Pario::Place bits() const noexcept {
    constexpr std::uint32_t kLast = TracePlace::kRuleMask >> 41U;
    const std::uint32_t number = priority - 9999;
    return Pario::Place{number == 0 || number > kLast ? kLast : number} << 41U;
  }
};

}  // namespace VelaPolicyMonitor
