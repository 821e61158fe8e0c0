#include "Kel/TextTrace.h"

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

namespace Kel::TextTrace {
namespace {

/// All that the text trace of the process consists of. Never destroyed.
struct Process {
  std::mutex registering;           // guards `facilities`
  std::deque<Facility> facilities;  // a deque: the address of a facility never changes
  std::mutex writing;               // guards `sink` and every call of it
  std::shared_ptr<Sink> sink = standardErrorSink();
  std::atomic<std::uint64_t> lost{0};
};

constinit std::atomic<void (*)()> levelObserver{nullptr};

// True while this thread is inside a sink: a line from there would wait for the lock it holds.
constinit thread_local bool insideSink = false;

Facility& facilityOf(Process& process, std::string_view name) {
  const std::lock_guard lock(process.registering);
  for (Facility& known : process.facilities) {
    if (known.name() == name) {
      return known;
    }
  }
  return process.facilities.emplace_back(std::string(name));
}

using Setting = std::pair<std::string, Levels>;

// "A/6,8,B/7": a comma separates both levels and facilities; an item with a slash begins the next
// facility.
bool parseSettings(std::string_view text, std::vector<Setting>& settings, std::string& why) {
  while (!text.empty()) {
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos || slash == 0) {
      why = "\"";
      why.append(text).append(
          "\" names no facility; expected FACILITY/LEVELS, such as VelaPolicyMonitor/6-8, and "
          "further "
          "ones after a comma");
      return false;
    }
    const std::size_t nextSlash = text.find('/', slash + 1);
    const std::size_t end =
        nextSlash == std::string_view::npos ? text.size() : text.rfind(',', nextSlash);
    if (end == std::string_view::npos || end < slash) {
      why = "\"" + std::string(text) + "\" has two slashes in one item; expected FACILITY/LEVELS";
      return false;
    }
    Levels levels = 0;
    if (!parseLevels(text.substr(slash + 1, end - slash - 1), levels, why)) {
      why.insert(0, ": ").insert(0, text.substr(0, slash)).insert(0, "facility ");
      return false;
    }
    settings.emplace_back(text.substr(0, slash), levels);
    text.remove_prefix(end == text.size() ? end : end + 1);
  }
  return true;
}

Process& process() {
  static Process* const only = [] {
    auto* const made = new Process;
    if (const char* text = std::getenv("VELA_TRACE"); text != nullptr) {
      std::vector<Setting> settings;
      std::string why;
      if (!parseSettings(text, settings, why)) {
        std::fprintf(stderr, "VELA_TRACE is ignored: %s\n", why.c_str());
        settings.clear();
      }
      for (const auto& [name, levels] : settings) {
        facilityOf(*made, name).levelsAre(levels);
      }
    }
    return made;
  }();
  return *only;
}

}  // namespace

void Facility::levelsAre(Levels levels) {
  levels_.store(levels & kAllLevels, std::memory_order_relaxed);
  if (const auto changed = levelObserver.load(); changed != nullptr) {
    changed();
  }
}

Facility& facility(std::string_view name) { return facilityOf(process(), name); }

bool levelsAre(std::string_view text, std::string& why) {
  std::vector<Setting> settings;
  if (!parseSettings(text, settings, why)) {
    return false;
  }
  for (const auto& [name, levels] : settings) {
    facility(name).levelsAre(levels);
  }
  return true;
}

Levels levelsOfAny() noexcept {
  Process& all = process();
  const std::lock_guard lock(all.registering);
  Levels levels = 0;
  for (const Facility& each : all.facilities) {
    levels |= each.levels();
  }
  return levels;
}

LevelObserver levelObserverIs(LevelObserver changed) noexcept {
  process();  // reads the environment first: an observer may ask for the levels when it is called
  return levelObserver.exchange(changed);
}

std::shared_ptr<Sink> sinkIs(std::shared_ptr<Sink> sink) {
  if (sink == nullptr) {
    sink = standardErrorSink();
  }
  Process& all = process();
  const std::lock_guard lock(all.writing);
  std::swap(all.sink, sink);
  return sink;
}

void write(const Line& line) noexcept {
  Process& all = process();
  bool written = false;
  if (!insideSink) {
    const std::lock_guard lock(all.writing);
    insideSink = true;
    try {
      written = all.sink->write(line);
    } catch (...) {  // NOLINT(bugprone-empty-catch)
      // Deliberate: a trace that fails must not change what the program does.
    }
    insideSink = false;
  }
  if (!written) {
    all.lost.fetch_add(1, std::memory_order_relaxed);
  }
}

std::uint64_t linesLost() noexcept { return process().lost.load(std::memory_order_relaxed); }

}  // namespace Kel::TextTrace
