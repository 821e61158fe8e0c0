#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "Brix/Publisher.h"
#include "Kel/PtrInterface.h"

namespace [[using gnu: visibility("default")]] KelBrix {

/// An observer of the old style: told which attribute of one object has changed, and its new value
/// (null when there is none). It does not keep the object alive, nor the object it; whoever owns it
/// removes it before it goes away.
class LegacyNotifiee : private Brix::Subscriber {
 public:
  LegacyNotifiee(const LegacyNotifiee&) = delete;
  LegacyNotifiee& operator=(const LegacyNotifiee&) = delete;

  /// Called after the change. What it raises reaches whoever made the change, after all other
  /// notifiees were told.
  virtual void notify(Kel::AttrId attributeId, const void* value) = 0;

 protected:
  LegacyNotifiee() noexcept : Subscriber(&LegacyNotifiee::deliver) {}
  ~LegacyNotifiee() = default;

 private:
  friend class LegacyGlue;

  static void deliver(const Brix::Publisher& publisher, Subscriber& slot, Kel::AttrId id,
                      const void* key, const void* value);
};

/// A walk over the notifiees that an object had when the walk began; those that were removed since
/// are passed over.
class LegacyNotifieeIterator {
 public:
  /// The next notifiee, or null at the end.
  LegacyNotifiee* next();

 private:
  friend class LegacyGlue;
  explicit LegacyNotifieeIterator(const Kel::PtrInterface& object);

  Brix::Ptr<const Kel::PtrInterface> object_;
  std::vector<Brix::Subscriber*> subscribers_;
  std::size_t at_ = 0;
};

// The four operations of the glue. Each forwards to the object's notifieeList(); for an object
// without one they do nothing.

/// Registers `notifiee`; twice is one entry. With `visitNow` it is told at once of everything that
/// it could be notified of, with the present values (of a collection: of each entry).
void addLegacyNotifiee(const Kel::PtrInterface& object, LegacyNotifiee& notifiee, bool visitNow);

/// Takes `notifiee` off the list; a stranger does nothing.
void removeLegacyNotifiee(const Kel::PtrInterface& object, LegacyNotifiee& notifiee) noexcept;

/// Tells all notifiees of an attribute. They may come and go meanwhile, themselves included.
void visitLegacyNotifiee(const Kel::PtrInterface& object, Kel::AttrId attributeId,
                         const void* value);

/// A walk over the object's notifiees; null when there are none.
std::unique_ptr<LegacyNotifieeIterator> iteratorLegacyNotifiee(const Kel::PtrInterface& object);

}  // namespace KelBrix
