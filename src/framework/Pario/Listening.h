#pragma once

#include <atomic>
#include <cstdint>

namespace [[using gnu: visibility("default")]] Pario {

/// Who listens to what: bit L, some facility of the text trace listens to level L; bit 16 + L, the
/// binary trace does; kMeasure, the runs of handlers are timed; kNarrowed, there is a scope
/// (Scope.h) and somebody who listens. Read-only for everybody else.
extern std::atomic<std::uint32_t> listening;

/// The bit of `listening` that tells of a scope.
inline constexpr std::uint32_t kNarrowed = 0x40000000U;
namespace Impl {
void narrowedIs(bool on) noexcept;  // for scopeIs
}
/// The bit of `listening` for a level of the text trace.
inline constexpr std::uint32_t textBit(unsigned level) noexcept { return 1U << level; }
/// The bit of `listening` for a level of the binary trace.
inline constexpr std::uint32_t binaryBit(unsigned level) noexcept { return 0x10000U << level; }

/// The levels (bit L is level L) that go to the binary trace while it has a default ring; all of
/// them at first.
void binaryLevelsAre(std::uint32_t levels) noexcept;
std::uint32_t binaryLevels() noexcept;

/// Whether whoever opens events times them (off at first). It is a bit of `listening`, so that the
/// test which an event makes anyhow decides.
inline constexpr std::uint32_t kMeasure = 0x80000000U;
void measuringIs(bool on) noexcept;
inline bool measuring() noexcept {
  return (listening.load(std::memory_order_relaxed) & kMeasure) != 0;
}

/// Whether anybody listens to `level`, 0 to 9: one load and one test.
inline bool on(unsigned level) noexcept {
  return (listening.load(std::memory_order_relaxed) & (textBit(level) | binaryBit(level))) != 0;
}

}  // namespace Pario
