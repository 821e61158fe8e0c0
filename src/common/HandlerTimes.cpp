#include "common/HandlerTimes.h"

#include <chrono>
#include <map>
#include <utility>

namespace VelaPolicyMonitor {
namespace {

struct Sum {
  std::uint64_t calls = 0;
  std::uint64_t nanoseconds = 0;
};

/// By the addresses of scope and form, which are literals.
using Sums = std::map<std::pair<const char*, const char*>, Sum>;

// Never destroyed: destructors that run after main still run handlers.
Sums& sums() {
  static auto* const only = new Sums;
  return *only;
}

struct Run {
  const char* scope;
  const char* form;
  std::uint64_t begin;
  std::uint64_t inside;  // nanoseconds in runs inside of this one
};

// Those that have begun and not ended, the innermost last.
std::vector<Run>& runs() {
  static thread_local std::vector<Run> all;
  return all;
}

std::uint64_t now() noexcept {
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(std::chrono::nanoseconds(since).count());
}

/// "void VelaPolicyMonitor::PolicyTranslateRootSm::" without what is not the name of the class.
std::string_view classOf(std::string_view scope) {
  scope.remove_prefix(scope.rfind(' ') + 1);
  scope.remove_suffix(std::string_view("::").size());
  return scope;
}

}  // namespace

bool HandlerTimes::begin(const char* scope, const char* form) noexcept {
  try {
    runs().push_back({scope, form, now(), 0});
    return true;
  } catch (...) {  // Deliberate: without memory the run is not measured; a handler must not notice.
    return false;
  }
}

void HandlerTimes::end() noexcept {
  const Run run = runs().back();
  runs().pop_back();
  const std::uint64_t lasted = now() - run.begin;
  if (!runs().empty()) {
    runs().back().inside += lasted;
  }
  try {
    Sum& sum = sums()[{run.scope, run.form}];
    ++sum.calls;
    sum.nanoseconds += lasted - run.inside;
  } catch (...) {  // NOLINT(bugprone-empty-catch)
    // Deliberate: without memory the run is not counted; a handler must not notice.
  }
}

std::vector<HandlerTimes::Entry> HandlerTimes::all() {
  std::map<std::pair<std::string_view, std::string_view>, Sum> byText;
  for (const auto& [key, sum] : sums()) {
    Sum& all = byText[{classOf(key.first), key.second}];
    all.calls += sum.calls;
    all.nanoseconds += sum.nanoseconds;
  }
  std::vector<Entry> entries;
  for (const auto& [key, sum] : byText) {
    entries.push_back(
        {key.first, key.second, sum.calls, static_cast<Kel::Seconds>(sum.nanoseconds) / 1e9});
  }
  return entries;
}

void HandlerTimes::forget() noexcept { sums().clear(); }

}  // namespace VelaPolicyMonitor
