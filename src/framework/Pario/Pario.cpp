#include "Pario/Pario.h"

#include "Kel/System.h"

namespace Pario {

constinit std::atomic<std::uint32_t> listening{0};

namespace {

constinit std::atomic<std::uint32_t> levelsOfBinary{Kel::TextTrace::kAllLevels};
constinit std::atomic<bool> measured{false};
constinit std::atomic<bool> narrowed{false};

void refresh() noexcept {
  const std::uint32_t binary =
      Lumo::defaultHandle() == nullptr ? 0 : levelsOfBinary.load(std::memory_order_relaxed);
  std::uint32_t all = Kel::TextTrace::levelsOfAny() | (binary << 16U);
  if (all != 0 && narrowed.load(std::memory_order_relaxed)) {
    all |= kNarrowed;
  }
  if (measured.load(std::memory_order_relaxed)) {
    all |= kMeasure;
  }
  listening.store(all, std::memory_order_relaxed);
}

// Both traces report changes from the moment the library is loaded; the first question to the text
// trace also makes it read the environment.
[[maybe_unused]] const bool connected = [] {
  Kel::TextTrace::levelObserverIs(refresh);
  Lumo::defaultHandleObserverIs(refresh);
  refresh();
  return true;
}();

}  // namespace

void binaryLevelsAre(std::uint32_t levels) noexcept {
  levelsOfBinary.store(levels & Kel::TextTrace::kAllLevels, std::memory_order_relaxed);
  refresh();
}

std::uint32_t binaryLevels() noexcept { return levelsOfBinary.load(std::memory_order_relaxed); }

void measuringIs(bool on) noexcept {
  measured.store(on, std::memory_order_relaxed);
  refresh();
}

namespace Impl {

void narrowedIs(bool on) noexcept {
  narrowed.store(on, std::memory_order_relaxed);
  refresh();
}

[[gnu::tls_model("initial-exec")]] constinit thread_local OpenEvent openEvent{};

void readClock() noexcept {
  constexpr Kel::Seconds kLatest = 9e9;  // beyond it nanoseconds do not fit; a clock of a test
  const Kel::Seconds seconds = Kel::System::currentTime();
  const bool fits = seconds > 0 && seconds < kLatest;
  openEvent.seconds = seconds;
  openEvent.stamp = fits ? static_cast<std::uint64_t>(static_cast<std::int64_t>(seconds * 1e9)) : 0;
}

void sendText(const Site& site, const std::string& message) {
  const Lumo::Site& same = *site.binary;
  Kel::TextTrace::write({openEvent.seconds, same.facility, same.level, same.file, same.line,
                         same.handler(), message});
}

}  // namespace Impl
}  // namespace Pario
