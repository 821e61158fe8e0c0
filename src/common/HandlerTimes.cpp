#include "common/HandlerTimes.h"

#include <chrono>
#include <map>
#include <utility>

#include "Pario/Listening.h"

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

constinit thread_local HandlerTimes::Run* innermost = nullptr;

std::uint64_t now() noexcept {
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(std::chrono::nanoseconds(since).count());
}

/// "void VelaPolicyMonitor::PolicyTranslateRootSm::" without what is not the name of the class.
std::string_view classOf(std::string_view scope) {
  scope.remove_prefix(scope.rfind(' ') + 1);
  scope.remove_suffix(scope.ends_with("::") ? 2 : 0);
  return scope;
}

}  // namespace

void HandlerTimes::Run::begin(const char* scope, const char* form) noexcept {
  form_ = nullptr;
  if (Pario::measuring()) {
    scope_ = scope;
    form_ = form;
    outer_ = std::exchange(innermost, this);
    inside_ = 0;
    begin_ = now();
  }
}

void HandlerTimes::Run::end() noexcept {
  if (form_ == nullptr) {
    return;
  }
  const std::uint64_t lasted = now() - begin_;
  innermost = outer_;
  if (outer_ != nullptr) {
    outer_->inside_ += lasted;
  }
  try {
    Sum& sum = sums()[{scope_, form_}];
    ++sum.calls;
    sum.nanoseconds += lasted - inside_;
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
