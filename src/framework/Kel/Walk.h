#pragma once

#include <cstddef>
#include <cstdint>

namespace [[using gnu: visibility("default")]] Kel {

class Walk;

/// The one word that a collection consists of, and the walks that are under way over it.
///
/// How iterators survive everything:
///
/// - *What is promised.* A walk visits every entry that is there when it begins and still there at
///   its turn, once. It does not come by an entry that was deleted before its turn, and by none
///   twice. What is inserted meanwhile is not visited by a walk over a Set or EntryMap; a walk over
///   a sorted collection comes by it if its place is still ahead. While a walk is under way, its
///   own body and whatever it calls may delete the current entry and any other, insert, insert
///   deleted keys anew, clear the collection, destroy it, and begin walks inside the walk.
///
/// - *Why it must be so.* Who walks a copy and deletes what the original no longer has calls
///   observers with each deletion, and these write to both as they like. Without the promise all
///   keys would have to be copied before each walk, although hardly any walk is disturbed.
///
/// - *A walk is registered.* An iterator is an entry in a list of its collection, as long as it is
///   under way. So the collection can set right whatever its own changes would spoil, and it can
///   tell its walks that it is going away. An iterator that reaches the end leaves the list; one
///   that goes away before, by a `break` or an exception, leaves it in its destructor.
///
/// - *A collection without walks pays nothing.* It is a single word: the address of its storage, or
///   null when it is empty. With a walk under way the word leads to that walk instead, marked by
///   its lowest bit, and the walk keeps the storage's address. Each further walk puts itself in
///   front, and takes the storage's address over from the one before. Every access to the
///   collection tests that bit, which the processor predicts; there is no second word, neither in
///   the collection nor in its storage. And because the list does not lie in the storage, the
///   storage of a collection that runs empty goes at once, walks or not.
///
/// - *Walks over a table* (Set, EntryMap) know positions. Slots lie without gaps, and an insertion
///   appends. Each walk has two boundaries: slots below the first have had their turn, slots from
///   the second on are new. A deletion leaves a hole; without walks the last slot fills it. With
///   walks the last slot may be on the other side of a boundary, and would be missed there or
///   visited again. So the hole is moved up first, boundary by boundary:
///
///       visited     due         new
///       a . c d   | e f g h   | i j k       b was deleted, and has had its turn
///       a d c     | . e f g h | i j k       the slot below the boundary fills the hole
///       a d c     | h e f g   | . i j k     likewise at the second boundary
///       a d c     | h e f g   | k i j       the last slot fills what is left
///
///   Every slot stays in its part. A deletion costs at most two moves more for every walk under
///   way, and the usual one, that of the current entry in a walk during which nothing was inserted,
///   costs none more.
///   Growth does not change positions.
///
/// - *Walks over a sorted collection* (OrderedMap, ValueMap) know the key they stand on. A change
///   marks them stale; a stale walk looks for the key after its own instead of taking the next
///   place. As it only ever goes on in one direction, it neither repeats an entry nor runs forever.
///
/// - *The current entry stays good.* An iterator over values stands on a copy; an iterator over
///   counted objects holds a pointer to the object. At a step it lets go of that object before it
///   looks for the next one, because an object that ends there may change the collection.
///
/// - *One thread.* Even reading registers a walk, so a collection is not walked by two threads at
///   once, as all of the object framework belongs to the thread of its event loop.
class Anchor {
 public:
  Anchor() noexcept = default;
  Anchor(const Anchor&) = delete;
  Anchor& operator=(const Anchor&) = delete;
  /// Ends the walks that are under way. The owner has freed the storage.
  ~Anchor();

  void* storage() const noexcept;
  void storageIs(void* storage) noexcept;
  /// The walk begun last; null when none is under way.
  Walk* walks() const noexcept { return walked() ? latest() : nullptr; }

 private:
  friend class Walk;

  bool walked() const noexcept { return (reinterpret_cast<std::uintptr_t>(word_) & 1U) != 0; }
  Walk* latest() const noexcept { return reinterpret_cast<Walk*>(word_ - 1); }
  static std::byte* tagged(Walk* walk) noexcept { return reinterpret_cast<std::byte*>(walk) + 1; }

  // The storage, or the latest walk plus 1. Mutable: who only reads a collection walks it as well.
  mutable std::byte* word_ = nullptr;
};

/// What all iterators are: a visit to one collection, known to it while it is under way.
class Walk {
 public:
  /// The walk begun before this one; null when that was the first.
  Walk* next() const noexcept { return next_; }
  /// Whether the end is reached, or the collection is gone.
  bool done() const noexcept { return owner_ == nullptr; }

 protected:
  Walk() noexcept = default;
  explicit Walk(const Anchor& owner) noexcept { enter(owner); }
  Walk(const Walk& other) noexcept {
    if (other.owner_ != nullptr) {
      enter(*other.owner_);
    }
  }
  Walk& operator=(const Walk& other) noexcept {
    if (this != &other) {
      leave();
      if (other.owner_ != nullptr) {
        enter(*other.owner_);
      }
    }
    return *this;
  }
  ~Walk() { leave(); }

  /// Null when the walk is done.
  const Anchor* owner() const noexcept { return owner_; }
  /// Ends the walk; harmless when it has ended.
  void leave() noexcept;

 private:
  friend class Anchor;
  void enter(const Anchor& owner) noexcept;

  const Anchor* owner_ = nullptr;
  Walk* next_ = nullptr;
  void* storage_ = nullptr;  // the collection's, in the walk begun last
};

inline Anchor::~Anchor() {
  for (Walk* walk = walks(); walk != nullptr; walk = walk->next_) {
    walk->owner_ = nullptr;
  }
}

inline void* Anchor::storage() const noexcept { return walked() ? latest()->storage_ : word_; }

inline void Anchor::storageIs(void* storage) noexcept {
  if (walked()) {
    latest()->storage_ = storage;
  } else {
    word_ = static_cast<std::byte*>(storage);
  }
}

inline void Walk::enter(const Anchor& owner) noexcept {
  storage_ = owner.storage();
  next_ = owner.walks();
  owner_ = &owner;
  owner.word_ = Anchor::tagged(this);
}

// All of this is inline, so that the compiler sees that a walk's end changes nothing else and keeps
// the walk in registers.
inline void Walk::leave() noexcept {
  if (owner_ == nullptr) {
    return;
  }
  if (owner_->latest() == this) {
    owner_->word_ = next_ == nullptr ? static_cast<std::byte*>(storage_) : Anchor::tagged(next_);
    if (next_ != nullptr) {
      next_->storage_ = storage_;
    }
  } else {  // one begun later is still under way: iterators that were copied, or kept
    Walk* later = owner_->latest();
    while (later->next_ != this) {
      later = later->next_;
    }
    later->next_ = next_;
  }
  owner_ = nullptr;
}

}  // namespace Kel
