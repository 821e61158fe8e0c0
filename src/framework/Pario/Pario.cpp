#include "Pario/Pario.h"

#include "Kel/System.h"

namespace Pario {

constinit std::atomic<std::uint32_t> listening{0};

namespace {

constinit std::atomic<std::uint32_t> binaryLevels{Kel::TextTrace::kAllLevels};

void refresh() noexcept {
  const std::uint32_t binary =
      Lumo::defaultHandle() == nullptr ? 0 : binaryLevels.load(std::memory_order_relaxed);
  listening.store(Kel::TextTrace::levelsOfAny() | (binary << 16U), std::memory_order_relaxed);
}

// Both traces report changes from the moment the library is loaded; the first question to the text
// trace also makes it read the environment.
[[maybe_unused]] const bool connected = [] {
  Kel::TextTrace::levelObserverIs(refresh);
  Lumo::defaultHandleObserverIs(refresh);
  refresh();
  return true;
}();

EventTime readClock() noexcept {
  constexpr Kel::Seconds kLatest = 18e9;  // beyond it nanoseconds do not fit; a clock of a test
  const Kel::Seconds seconds = Kel::System::currentTime();
  const bool fits = seconds > 0 && seconds < kLatest;
  return {seconds, fits ? static_cast<std::uint64_t>(seconds * 1e9) : 0};
}

struct OpenEvent {
  unsigned depth = 0;
  EventTime time{};
};

// Used in this file only, so that its place is known when the library is loaded.
[[gnu::tls_model("initial-exec")]] constinit thread_local OpenEvent openEvent;

}  // namespace

void binaryLevelsAre(std::uint32_t levels) noexcept {
  binaryLevels.store(levels & Kel::TextTrace::kAllLevels, std::memory_order_relaxed);
  refresh();
}

namespace Impl {

void enterEvent() noexcept {
  if (openEvent.depth++ == 0) {
    openEvent.time = readClock();
  }
}

void leaveEvent() noexcept { --openEvent.depth; }

EventTime timeNow() noexcept { return openEvent.depth != 0 ? openEvent.time : readClock(); }

void sendText(const Site& site, const Line& line, const EventTime& time,
              const std::string& message) {
  Kel::TextTrace::write({time.seconds, site.text->name(), line.level, site.binary->file, line.line,
                         site.binary->handler(), message});
}

}  // namespace Impl
}  // namespace Pario
