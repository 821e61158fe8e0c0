#include "Pario/Pario.h"

#include "Kel/System.h"

namespace Pario {

constinit std::atomic<std::uint32_t> listening{0};

namespace {

constinit std::atomic<std::uint32_t> levelsOfBinary{Kel::TextTrace::kAllLevels};
constinit std::atomic<bool> measured{false};

void refresh() noexcept {
  const std::uint32_t binary =
      Lumo::defaultHandle() == nullptr ? 0 : levelsOfBinary.load(std::memory_order_relaxed);
  const std::uint32_t measure = measured.load(std::memory_order_relaxed) ? kMeasure : 0;
  listening.store(Kel::TextTrace::levelsOfAny() | (binary << 16U) | measure,
                  std::memory_order_relaxed);
}

// Both traces report changes from the moment the library is loaded; the first question to the text
// trace also makes it read the environment.
[[maybe_unused]] const bool connected = [] {
  Kel::TextTrace::levelObserverIs(refresh);
  Lumo::defaultHandleObserverIs(refresh);
  refresh();
  return true;
}();

struct EventTime {
  Kel::Seconds seconds;  // what is printed
  std::uint64_t stamp;   // the same in nanoseconds
};

struct OpenEvent {
  unsigned depth = 0;
  EventTime time{};  // of the open event or, when none is open, of the last message
};

EventTime readClock() noexcept {
  constexpr Kel::Seconds kLatest = 18e9;  // beyond it nanoseconds do not fit; a clock of a test
  const Kel::Seconds seconds = Kel::System::currentTime();
  const bool fits = seconds > 0 && seconds < kLatest;
  return {seconds, fits ? static_cast<std::uint64_t>(seconds * 1e9) : 0};
}

// Used in this file only, so that its place is known when the library is loaded.
[[gnu::tls_model("initial-exec")]] constinit thread_local OpenEvent openEvent;

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

void enterEvent() noexcept {
  if (openEvent.depth++ == 0) {
    openEvent.time = readClock();
  }
}

void leaveEvent() noexcept { --openEvent.depth; }

namespace {

Lumo::TraceFile* ringFor(const Site& site) noexcept {
  const bool listens = (listening.load(std::memory_order_relaxed) & (0x10000U << site.level)) != 0;
  return listens ? Lumo::defaultHandle() : nullptr;
}

[[gnu::noinline, gnu::cold]] OpenRecord openSlowly(const Site& site, std::size_t size,
                                                   Place place) noexcept {
  if (openEvent.depth == 0) {
    openEvent.time = readClock();
  }
  Lumo::TraceFile* const ring = ringFor(site);
  if (ring == nullptr) {
    return {};
  }
  return {ring->begin(site.id, size, openEvent.time.stamp, openEvent.time.seconds, place), ring};
}

}  // namespace

OpenRecord openRecord(const Site& site, std::size_t size, Place place) noexcept {
  if (openEvent.depth != 0) [[likely]] {
    if (Lumo::TraceFile* const ring = ringFor(site); ring != nullptr) [[likely]] {
      const EventTime& time = openEvent.time;
      std::byte* const record = ring->tryBegin(site.id, size, time.stamp, time.seconds, place);
      if (record != nullptr) [[likely]] {
        return {record, ring};
      }
    }
  }
  return openSlowly(site, size,
                    place);  // nothing else is called above, so that no register need be saved
}

void sendText(const Site& site, const std::string& message) {
  const Lumo::Site& same = *site.binary;
  Kel::TextTrace::write({openEvent.time.seconds, same.facility, same.level, same.file, same.line,
                         same.handler(), message});
}

}  // namespace Impl
}  // namespace Pario
