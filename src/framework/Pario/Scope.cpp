#include "Pario/Scope.h"

#include <set>

#include "Pario/Listening.h"

namespace Pario {

constinit Impl::ScopeWords Impl::scopeWords{};

void scopeIs(const Scope& scope) {
  // Never destroyed, and never forgotten: another thread may be comparing with one of them.
  static auto* const handlers = new std::set<std::string>;
  Impl::ScopeWords& words = Impl::scopeWords;
  words.handler.store(scope.handler.empty() ? nullptr : &*handlers->insert(scope.handler).first,
                      std::memory_order_release);
  words.mask.store(scope.mask, std::memory_order_relaxed);
  words.value.store(scope.value, std::memory_order_relaxed);
  Impl::narrowedIs(scope.mask != 0 || !scope.handler.empty());
}

Scope scope() {
  const Impl::ScopeWords& words = Impl::scopeWords;
  const std::string* const handler = words.handler.load(std::memory_order_acquire);
  return {words.mask.load(std::memory_order_relaxed), words.value.load(std::memory_order_relaxed),
          handler == nullptr ? "" : *handler};
}

}  // namespace Pario
