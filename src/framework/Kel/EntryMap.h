#pragma once

#include <cassert>
#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

#include "Brix/Ptr.h"
#include "Kel/Hash.h"
#include "Kel/PackedPointer.h"
#include "Kel/Table.h"

namespace [[using gnu: visibility("default")]] Kel {

/// An unordered map of counted objects that know their own key, one pointer wide and without memory
/// while it is empty.
///
/// `KeyOf` is a const member function of T that returns the key, which never changes. Walks may be
/// nested, and everything may happen to the map meanwhile (see Walk.h).
template <class T, auto KeyOf>
class EntryMap {
 public:
  using KeyResult = decltype((std::declval<const T&>().*KeyOf)());
  using Key = std::remove_cvref_t<KeyResult>;

  /// Holds the entry it stands on, so that the entry and its key stay good even if it is deleted.
  class Iterator : public TableWalk {
   public:
    using iterator_category = std::input_iterator_tag;
    /// The key (by value when KeyOf returns it so) and the entry.
    using reference = std::pair<KeyResult, const Brix::Ptr<T>&>;
    using value_type = std::pair<Key, Brix::Ptr<T>>;
    using difference_type = std::ptrdiff_t;
    using pointer = void;

    reference operator*() const noexcept { return {((*current_).*KeyOf)(), current_}; }
    Iterator& operator++() noexcept {
      current_.reset();  // first: what ends with it may change the map
      stand();
      return *this;
    }
    Iterator operator++(int) noexcept {
      Iterator before = *this;
      ++*this;
      return before;
    }
    /// Tells only whether both walks are done or neither is.
    bool operator==(const Iterator& other) const noexcept { return done() == other.done(); }

   private:
    friend class EntryMap;

    Iterator() noexcept = default;
    explicit Iterator(const EntryMap& map) noexcept
        : TableWalk(map.table_.anchor(), map.table_.block()->slots(), map.table_.size()) {
      stand();
    }
    void stand() noexcept {
      if (const std::byte* const slot = step(sizeof(Slot))) {
        current_ = Brix::Ptr<T>(reinterpret_cast<const Slot*>(slot)->entry.get());
      }
    }

    Brix::Ptr<T> current_;
  };
  using iterator = Iterator;
  using const_iterator = Iterator;

  EntryMap() noexcept = default;
  EntryMap(const EntryMap&) = delete;
  EntryMap& operator=(const EntryMap&) = delete;
  ~EntryMap() { clear(); }

  /// The entry of this key; null when absent. The key may be of any type that compares equal to
  /// keys and has the same hash, such as text for a string.
  template <class L>
  T* find(const L& key) const noexcept {
    const std::uint32_t hash = hashOf(key);
    const Slot* const slot = table_.find(hash, IsKey<L>{key, hash});
    return slot == nullptr ? nullptr : slot->entry.get();
  }

  /// Adds an entry whose key is absent. Raises std::bad_alloc and changes nothing (the entry goes)
  /// when there is no memory.
  void insert(Brix::Ptr<T> entry) {
    assert(find(((*entry).*KeyOf)()) == nullptr && "the key is in the map already");
    const std::uint32_t hash = hashOf(((*entry).*KeyOf)());
    table_.append(Slot{PackedPointer<T>(entry.get()), hash}, hash);
    static_cast<void>(entry.release());
  }

  /// Takes the entry out of the map and hands it out; null when absent. The key may be a reference
  /// into the entry.
  template <class L>
  Brix::Ptr<T> take(const L& key) noexcept {
    const std::uint32_t hash = hashOf(key);
    Slot taken;
    const bool found = table_.take(hash, IsKey<L>{key, hash}, taken);
    return found ? Brix::Ptr<T>(taken.entry.get(), Brix::adopt) : nullptr;
  }

  std::size_t size() const noexcept { return table_.size(); }
  bool empty() const noexcept { return size() == 0; }
  /// Makes room for `size` entries, not more.
  void reserve(std::size_t size) { table_.reserve(size); }
  std::size_t heapBytes() const noexcept { return table_.heapBytes(); }

  /// Deletes all entries. The map is empty before the first of them ends; what they add to it while
  /// they end is deleted as well.
  void clear() noexcept {
    while (!empty()) {
      auto* const block = table_.detach();
      for (std::uint32_t at = 0; at != block->size(); ++at) {
        const Brix::Ptr<T> entry(block->slots()[at].entry.get(), Brix::adopt);
      }
      Slots::Block::free(block);
    }
    Slots::Block::free(table_.detach());  // an empty one, of reserved room
  }

  Iterator begin() const noexcept { return empty() ? Iterator() : Iterator(*this); }
  Iterator end() const noexcept { return Iterator(); }

 private:
  struct Slot {
    PackedPointer<T> entry;
    std::uint32_t hash;
  };
  struct SlotHash {
    std::uint32_t operator()(const Slot& slot) const noexcept { return slot.hash; }
  };
  using Slots = Table<Slot, SlotHash>;

  template <class L>
  struct IsKey {
    bool operator()(const Slot& slot) const noexcept {
      return slot.hash == hash && (slot.entry.get()->*KeyOf)() == key;
    }
    const L& key;
    std::uint32_t hash;
  };

  Slots table_;
};

}  // namespace Kel
