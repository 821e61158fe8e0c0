#include "KelBrix/LegacyNotifiee.h"

#include <algorithm>

namespace KelBrix {

/// Reaches into notifiees for the free functions below.
class LegacyGlue {
 public:
  static Brix::Subscriber& slotOf(LegacyNotifiee& notifiee) { return notifiee; }
  /// Null for a subscriber of another kind.
  static LegacyNotifiee* notifieeOf(Brix::Subscriber* slot) {
    return slot->dispatch() == &LegacyNotifiee::deliver ? static_cast<LegacyNotifiee*>(slot)
                                                        : nullptr;
  }
  static std::unique_ptr<LegacyNotifieeIterator> iteratorOf(const Kel::PtrInterface& object) {
    return std::unique_ptr<LegacyNotifieeIterator>(new LegacyNotifieeIterator(object));
  }
};

namespace {

void visitPresentValues(const Kel::PtrInterface& object, LegacyNotifiee& notifiee) {
  const Kel::TypeDescriptor& type = object.fwkType().descriptor();
  for (const Kel::AttrId id : type.published) {
    const Kel::Row& row = *type.row(id);
    if (row.walk == nullptr) {
      notifiee.notify(id, row.find(object, nullptr));
      continue;
    }
    struct Visit {
      LegacyNotifiee& notifiee;
      Kel::AttrId id;
    } visit{notifiee, id};
    row.walk(object, &visit, [](void* context, const void* /*key*/, const void* value) {
      const Visit& to = *static_cast<Visit*>(context);
      to.notifiee.notify(to.id, value);
    });
  }
}

}  // namespace

void LegacyNotifiee::deliver(const Brix::Publisher& /*publisher*/, Subscriber& slot, Kel::AttrId id,
                             const void* /*key*/, const void* value) {
  static_cast<LegacyNotifiee&>(slot).notify(id, value);
}

LegacyNotifieeIterator::LegacyNotifieeIterator(const Kel::PtrInterface& object)
    : object_(&object), subscribers_(object.notifieeList().subscribers()) {}

LegacyNotifiee* LegacyNotifieeIterator::next() {
  while (at_ < subscribers_.size()) {
    Brix::Subscriber* const slot = subscribers_[at_++];
    const auto present = object_->notifieeList().subscribers();
    if (std::find(present.begin(), present.end(), slot) == present.end()) {
      continue;
    }
    if (LegacyNotifiee* const notifiee = LegacyGlue::notifieeOf(slot)) {
      return notifiee;
    }
  }
  return nullptr;
}

void addLegacyNotifiee(const Kel::PtrInterface& object, LegacyNotifiee& notifiee, bool visitNow) {
  const Brix::Publisher publisher = object.notifieeList();
  publisher.subscriberAdd(LegacyGlue::slotOf(notifiee));
  if (visitNow && publisher) {
    visitPresentValues(object, notifiee);
  }
}

void removeLegacyNotifiee(const Kel::PtrInterface& object, LegacyNotifiee& notifiee) noexcept {
  object.notifieeList().subscriberRemove(LegacyGlue::slotOf(notifiee));
}

void visitLegacyNotifiee(const Kel::PtrInterface& object, Kel::AttrId attributeId,
                         const void* value) {
  object.notifieeList().publish(attributeId, nullptr, value);
}

std::unique_ptr<LegacyNotifieeIterator> iteratorLegacyNotifiee(const Kel::PtrInterface& object) {
  if (object.notifieeList().subscriberCount() == 0) {
    return nullptr;
  }
  return LegacyGlue::iteratorOf(object);
}

}  // namespace KelBrix
