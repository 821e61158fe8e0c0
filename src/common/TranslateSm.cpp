#include "common/TranslateSm.h"

#include <algorithm>
#include <exception>
#include <list>
#include <unordered_map>
#include <utility>

namespace VelaPolicyMonitor {
namespace {

using Calls = std::list<std::function<void()>>;  // never empty

/// Postponed calls are rare, so they lie beside the machines and not in each of them.
std::unordered_map<const TranslateSm*, Calls>& postponedCalls() {
  static auto* const calls = new std::unordered_map<const TranslateSm*, Calls>;
  return *calls;
}

constinit TranslateSm::Postponed counted;

// How many exceptions were on their way when the innermost machine that is settling now began: what
// it serves has nothing to do with them.
constinit int beforeSettling = 0;

/// The next call postponed for `sm`; empty when there is none.
std::function<void()> nextPostponed(const TranslateSm* sm) {
  const auto at = postponedCalls().find(sm);
  if (at == postponedCalls().end()) {
    return {};
  }
  std::function<void()> call = std::move(at->second.front());
  at->second.pop_front();
  if (at->second.empty()) {
    postponedCalls().erase(at);
  }
  return call;
}

}  // namespace

const TranslateSm::Postponed& TranslateSm::postponed() noexcept { return counted; }

TranslateSm::~TranslateSm() { dropPostponed(); }

void TranslateSm::dropPostponed() noexcept {
  if (attention_) {
    postponedCalls().erase(this);
  }
}

void TranslateSm::postpone(std::function<void()> call) {
  if (retired_) {
    return;
  }
  Calls last;
  last.push_back(std::move(call));  // first: a call that finds no memory leaves no empty list
  Calls& calls = postponedCalls()[this];
  calls.splice(calls.end(), last);
  attention_ = true;
  ++counted.calls;
  counted.atOnce = std::max(counted.atOnce, calls.size());
}

void TranslateSm::retire() noexcept {
  if (retired_) {
    return;
  }
  retired_ = true;
  dropPostponed();
  tearDown();
}

void TranslateSm::onZeroReferences() noexcept {
  if (depth_ == 0) {
    destroy();
  } else {
    attention_ = true;
  }
}

void TranslateSm::settle() {
  std::exception_ptr first;
  const int before = beforeSettling;
  beforeSettling = std::uncaught_exceptions();
  catchingUp_ = true;
  while (const auto call = nextPostponed(this)) {  // the machine stays busy while they are served
    if (refCount() == 0 || kelMarkedForDeletion()) {
      continue;  // about to be destroyed, or to ignore it
    }
    try {
      call();
    } catch (...) {
      if (!first) {
        first = std::current_exception();
      }
    }
  }
  catchingUp_ = false;
  beforeSettling = before;
  attention_ = false;
  depth_ = 0;
  if (refCount() == 0) {
    destroy();
  }
  if (first && std::uncaught_exceptions() == before) {
    std::rethrow_exception(first);
  }
}

}  // namespace VelaPolicyMonitor
