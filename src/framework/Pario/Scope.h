#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace [[using gnu: visibility("default")]] Pario {

/// To what a message belongs, as bits whose meaning is that of the program that traces; 0: to
/// nothing in particular. Every record of the binary trace has one, so that a reader can choose.
using Place = std::uint64_t;

/// Narrows what is traced, in both traces alike: to the messages whose place has the bits of
/// `value` where `mask` has ones, and to one handler.
///
/// A message out of the scope is turned away before anything is written or formatted: a few loads
/// and tests. Without a scope it costs a message nothing: that there is one is a bit of
/// `listening`.
struct Scope {
  Place mask = 0;
  Place value = 0;
  std::string handler;  ///< "handleVrf", without its parameters; empty: all
};

namespace Impl {
struct ScopeWords {
  std::atomic<Place> mask;
  std::atomic<Place> value;
  std::atomic<const std::string*> handler;  // null: all
};
extern ScopeWords scopeWords;

inline bool isHandler(std::string_view form, std::string_view handler) noexcept {
  return form.starts_with(handler) && form.substr(handler.size()).starts_with('(');
}
}  // namespace Impl

/// Sets the scope, from the thread of the event loop. Messages of other threads may be judged by
/// half of the change while it is made.
void scopeIs(const Scope& scope);
Scope scope();

/// Whether a message of the handler with this form that belongs to `place` is in the scope.
inline bool inScope(Place place, const char* form) noexcept {
  const Impl::ScopeWords& words = Impl::scopeWords;
  if ((place & words.mask.load(std::memory_order_relaxed)) !=
      words.value.load(std::memory_order_relaxed)) {
    return false;
  }
  const std::string* const handler = words.handler.load(std::memory_order_acquire);
  return handler == nullptr || Impl::isHandler(form, *handler);
}

}  // namespace Pario
