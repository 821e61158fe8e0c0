#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Brix/Counted.h"
#include "Brix/Subscriber.h"

namespace [[using gnu: visibility("default")]] Brix {

/// The subscribers of one object, in one word: none, a single one, or a list.
///
/// How a round of notification works:
///
/// - *Who is called.* A round calls every subscriber that was registered when it began, in the
/// order
///   of registration, once. One that is removed meanwhile is not called any more, wherever in the
///   round it stands; one that is added meanwhile waits for the next round (it has just read the
///   current state for itself).
///
/// - *Rounds nest.* A subscriber may change the publishing object and so start a round inside the
///   round. While any round is under way, a removal leaves a hole in the list instead of closing
///   ranks, so that the positions of the outer rounds stay right; the last round to end closes the
///   holes. An addition may move the list to a larger block: rounds look it up afresh at each step.
///
/// - *One subscriber is the usual case* (the one state machine that mirrors the entity) and needs
///   no list: the word holds its address, and a round over it keeps no state that anything could
///   invalidate.
///
/// - *The publishing object stays alive* to the end of a round over a list, because the round goes
///   on reading the list after each call. A round over a single subscriber touches nothing after
///   the call, so it takes no reference. Whoever changes an entity keeps it alive as long as it
///   needs it.
///
/// - *An exception* that leaves a subscriber does not rob the others: they are served, then the
///   first exception goes on to whoever made the change. The change itself stays.
///
/// - *Registering and removing cannot fail.* Registering may need memory; if there is none left the
///   process ends, as it does for every failure in the wiring of the objects. Registering twice is
///   one entry, removing a stranger does nothing.
class SubscriberList {
 public:
  SubscriberList() noexcept = default;
  SubscriberList(const SubscriberList&) = delete;
  SubscriberList& operator=(const SubscriberList&) = delete;
  ~SubscriberList();

  bool empty() const noexcept { return word_ == 0; }
  std::size_t size() const noexcept;
  void add(Subscriber& subscriber) noexcept;     ///< twice is one entry
  void remove(Subscriber& subscriber) noexcept;  ///< a stranger is nothing
  /// The subscribers at this moment, in the order of registration.
  std::vector<Subscriber*> all() const;

 private:
  friend class Publisher;
  struct Block;

  bool isList() const noexcept { return (word_ & 1U) != 0; }
  Block& block() const noexcept { return *reinterpret_cast<Block*>(word_ & ~std::uintptr_t{1}); }
  Subscriber* single() const noexcept { return reinterpret_cast<Subscriber*>(word_); }
  void grow() noexcept;
  void closeRanks() noexcept;

  std::uintptr_t word_ = 0;
};

/// An object seen as a publisher: what to subscribe to. A light handle, copied freely, valid as
/// long as the object; null when the object has nothing to subscribe to.
class Publisher {
 public:
  Publisher() noexcept = default;
  /// Of `owner`, whose list `subscribers` is.
  Publisher(const Counted& owner, SubscriberList& subscribers) noexcept
      : owner_(&owner), subscribers_(&subscribers) {}

  explicit operator bool() const noexcept { return owner_ != nullptr; }
  /// The object that publishes; null for a null publisher.
  const Counted* owner() const noexcept { return owner_; }

  /// From the next notification on it is called; twice is one entry.
  void subscriberAdd(Subscriber& subscriber) const noexcept {
    if (subscribers_ != nullptr) {
      subscribers_->add(subscriber);
    }
  }
  /// From now on it is not called, also in a round under way; a stranger is nothing.
  void subscriberRemove(Subscriber& subscriber) const noexcept {
    if (subscribers_ != nullptr) {
      subscribers_->remove(subscriber);
    }
  }
  /// How many are registered now.
  std::size_t subscriberCount() const noexcept {
    return subscribers_ == nullptr ? 0 : subscribers_->size();
  }

  /// Those that are registered now, in the order of registration.
  std::vector<Subscriber*> subscribers() const {
    return subscribers_ == nullptr ? std::vector<Subscriber*>() : subscribers_->all();
  }

  /// Delivers a notification to every subscriber (see SubscriberList); raises what the first
  /// subscriber that failed has raised, after all were served.
  void publish(AttrId id, const void* key = nullptr, const void* value = nullptr) const {
    if (subscribers_ == nullptr || subscribers_->empty()) {
      return;
    }
    if (subscribers_->isList()) {
      publishToList(id, key, value);
    } else {
      Subscriber* const only = subscribers_->single();
      only->dispatch()(*this, *only, id, key, value);
    }
  }

  bool operator==(const Publisher&) const noexcept = default;

 private:
  void publishToList(AttrId id, const void* key, const void* value) const;

  const Counted* owner_ = nullptr;
  SubscriberList* subscribers_ = nullptr;
};

}  // namespace Brix
