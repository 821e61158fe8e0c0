#pragma once

#include <functional>
#include <type_traits>
#include <utility>

#include "Brix/Counted.h"
#include "Brix/Ptr.h"
#include "Brix/Publisher.h"

namespace Brix {

/// An object that publishes what a test tells it to, and may do something when it ends.
class Publishing : public Counted {
 public:
  static Ptr<Publishing> make() { return Ptr<Publishing>(new Publishing, adopt); }
  ~Publishing() override {
    if (onEnd) {
      onEnd();
    }
  }
  Publisher publisher() const { return {*this, subscribers_}; }

  std::function<void()> onEnd;

 private:
  mutable SubscriberList subscribers_;
};

/// A subscriber that runs a function whenever it is called.
class Slot : public Subscriber {
 public:
  struct Seen {
    Publisher publisher;
    AttrId id = 0;
    const void* key = nullptr;
    const void* value = nullptr;
  };

  template <class Function>
  explicit Slot(Function function) : Subscriber(&Slot::call) {
    if constexpr (std::is_invocable_v<Function, const Seen&>) {
      function_ = std::move(function);
    } else {
      function_ = [function = std::move(function)](const Seen&) { function(); };
    }
  }

 private:
  static void call(const Publisher& publisher, Subscriber& self, AttrId id, const void* key,
                   const void* value) {
    static_cast<Slot&>(self).function_({publisher, id, key, value});
  }

  std::function<void(const Seen&)> function_;
};

}  // namespace Brix
