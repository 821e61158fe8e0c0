#pragma once

#include <functional>
#include <utility>

#include "Brix/Publisher.h"
#include "Kel/PtrInterface.h"

namespace [[using gnu: visibility("default")]] Kel {

/// Calls a function at every change of one object, until it goes away. Keeps the object alive.
///
///   const Kel::Observer watch(*match, [&](Kel::AttrId id, const void* key) { … });
///
/// An exception that leaves the function reaches whoever made the change.
class Observer : private Brix::Subscriber {
 public:
  /// Gets the id of the attribute, and the key or null where it has none.
  using Function = std::function<void(AttrId id, const void* key)>;

  /// Calls `function` from the next change on.
  template <class Entity>
  Observer(const Entity& entity, Function function)
      : Subscriber(&Observer::notify),
        function_(std::move(function)),
        object_(&entity),
        publisher_(entity.publisher()) {
    publisher_.subscriberAdd(*this);
  }
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;
  ~Observer() { publisher_.subscriberRemove(*this); }

 private:
  static void notify(const Brix::Publisher& /*publisher*/, Subscriber& self, AttrId id,
                     const void* key, const void* /*value*/) {
    // A copy, so that the function may destroy the observer that it belongs to.
    const Function function = static_cast<Observer&>(self).function_;
    function(id, key);
  }

  Function function_;
  Brix::Ptr<const PtrInterface> object_;
  Brix::Publisher publisher_;
};

}  // namespace Kel
