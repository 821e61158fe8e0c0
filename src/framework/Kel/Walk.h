#pragma once

#include <cstddef>
#include <cstdint>

namespace Kel {

class Walk;

/// The one word that a collection consists of: the address of its storage, or null.
///
/// While walks are under way over the collection, the word leads to the latest of them, and that
/// walk keeps the storage's address meanwhile. So a collection that nobody walks pays nothing for
/// its walks, in memory nor in time, and the storage of a collection that runs empty can go at
/// once.
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

/// What all iterators are: a registered visit to one collection.
///
/// A walk is known to its collection from begin() to the end, or until the iterator goes away. It
/// is under way as long as it has an owner; at the end, or when the collection is destroyed, it has
/// none and stays done.
class Walk {
 public:
  Walk* next() const noexcept { return next_; }
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

  const Anchor* owner() const noexcept { return owner_; }
  /// Ends the walk; harmless when it has ended.
  void leave() noexcept {
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

 private:
  friend class Anchor;

  void enter(const Anchor& owner) noexcept {
    storage_ = owner.storage();
    next_ = owner.walks();
    owner_ = &owner;
    owner.word_ = Anchor::tagged(this);
  }

  const Anchor* owner_ = nullptr;
  Walk* next_ = nullptr;     // the walk begun before this one
  void* storage_ = nullptr;  // the collection's, in the walk begun last
};

inline void* Anchor::storage() const noexcept { return walked() ? latest()->storage_ : word_; }

inline void Anchor::storageIs(void* storage) noexcept {
  if (walked()) {
    latest()->storage_ = storage;
  } else {
    word_ = static_cast<std::byte*>(storage);
  }
}

inline Anchor::~Anchor() {
  for (Walk* walk = walks(); walk != nullptr; walk = walk->next_) {
    walk->owner_ = nullptr;
  }
}

}  // namespace Kel
