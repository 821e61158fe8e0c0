#pragma once

#include <cstddef>
#include <iterator>
#include <new>
#include <type_traits>

#include "Kel/Hash.h"
#include "Kel/Table.h"

namespace [[using gnu: visibility("default")]] Kel {

/// An unordered set of plain values, one pointer wide and without memory while it is empty.
///
/// Keys need ==, and a hash as Kel::hashOf knows it. Walks may be nested, and everything may happen
/// to the set meanwhile (see Walk.h).
template <class K>
class Set {
  static_assert(std::is_trivially_copyable_v<K>, "the keys of a set are moved as memory");

 public:
  using value_type = K;

  /// Stands on a copy of the key, which stays good whatever happens to the set.
  class Iterator : public TableWalk {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = K;
    using difference_type = std::ptrdiff_t;
    using pointer = const K*;
    using reference = const K&;

    const K& operator*() const noexcept { return current_.key; }
    const K* operator->() const noexcept { return &current_.key; }
    Iterator& operator++() noexcept {
      if (const std::byte* const slot = step(sizeof(K))) {
        new (&current_.key) K(*reinterpret_cast<const K*>(slot));
      }
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
    friend class Set;
    union Current {
      Current() noexcept {}
      K key;
    };

    Iterator() noexcept = default;
    explicit Iterator(const Set& set) noexcept
        : TableWalk(set.table_.anchor(), set.table_.block()->slots(), set.table_.size()) {
      ++*this;
    }

    Current current_;
  };
  using iterator = Iterator;
  using const_iterator = Iterator;

  /// Returns true when the key was absent. The key may be a reference into this very set. Raises
  /// std::bad_alloc and changes nothing when there is no memory.
  bool insert(const K& key) {
    const std::uint32_t hash = hashIfNeeded(key);
    if (table_.find(hash, IsKey{key}) != nullptr) {
      return false;
    }
    table_.append(key, hash);
    return true;
  }

  /// Returns true when the key was there. The key may be a reference into this very set.
  bool erase(const K& key) noexcept {
    typename Iterator::Current taken;
    return table_.take(hashIfNeeded(key), IsKey{key}, taken.key);
  }

  bool contains(const K& key) const noexcept {
    return table_.find(hashIfNeeded(key), IsKey{key}) != nullptr;
  }
  std::size_t size() const noexcept { return table_.size(); }
  bool empty() const noexcept { return size() == 0; }
  void clear() noexcept { Slots::Block::free(table_.detach()); }
  /// Inserts the keys of `other`, in their order, into an empty set. Raises std::bad_alloc and
  /// changes nothing when there is no memory.
  void fill(const Set& other) { table_.fill(other.table_); }
  /// Makes room for `size` keys, not more.
  void reserve(std::size_t size) { table_.reserve(size); }
  /// Has its memory fetched while other things are done; as much as sets of a usual size have.
  void prefetch() const noexcept { table_.prefetch(); }
  std::size_t heapBytes() const noexcept { return table_.heapBytes(); }

  Iterator begin() const noexcept { return empty() ? Iterator() : Iterator(*this); }
  Iterator end() const noexcept { return Iterator(); }

 private:
  struct KeyHash {
    std::uint32_t operator()(const K& key) const noexcept { return hashOf(key); }
  };
  using Slots = Table<K, KeyHash>;

  struct IsKey {
    bool operator()(const K& slot) const noexcept { return slot == key; }
    const K& key;
  };

  std::uint32_t hashIfNeeded(const K& key) const noexcept {
    return table_.indexed() ? hashOf(key) : 0;
  }
  Slots table_;
};

}  // namespace Kel
