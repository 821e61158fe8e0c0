#pragma once

#include <cstdint>

namespace [[using gnu: visibility("default")]] Brix {

class Publisher;

/// Identifies an attribute within its type.
using AttrId = std::int16_t;

/// A place in somebody's object at which notifications arrive. It is registered with publishers by
/// address; its owner removes it before it goes away, and keeps it where it is until then.
class Subscriber {
 public:
  /// What is called. `key` points to the key of the entry that was changed, or is null for an
  /// attribute without keys; `value` points to the new value, or is null when there is none.
  using Dispatch = void(const Publisher& publisher, Subscriber& subscriber, AttrId id,
                        const void* key, const void* value);

  Subscriber() noexcept = default;
  /// `call` may be null: nothing is called.
  explicit Subscriber(Dispatch* call) noexcept : dispatch_(call) {}
  Subscriber(const Subscriber&) = delete;
  Subscriber& operator=(const Subscriber&) = delete;

  Dispatch* dispatch() const noexcept { return dispatch_; }       ///< what is called
  void dispatchIs(Dispatch* call) noexcept { dispatch_ = call; }  ///< from the next notification on

 protected:
  ~Subscriber() = default;

 private:
  Dispatch* dispatch_ = nullptr;
};

}  // namespace Brix
