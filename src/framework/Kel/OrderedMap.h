#pragma once

#include <cassert>
#include <compare>
#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

#include "Brix/Ptr.h"
#include "Kel/PackedPointer.h"
#include "Kel/SortedChunks.h"
#include "Kel/SortedWalk.h"

namespace [[using gnu: visibility("default")]] Kel {

/// A map of counted objects that know their own key, walked from the highest key to the lowest. One
/// pointer wide and without memory while it is empty.
///
/// `KeyOf` is a const member function of T that returns the key, which is trivially copyable,
/// ordered by <=> and never changes. Walks may be nested, and everything may happen to the map
/// meanwhile (see Walk.h): a walk over a map that has changed goes on at the next lower key. So an
/// entry inserted during the walk is visited when its turn is still to come.
template <class T, auto KeyOf>
class OrderedMap {
 public:
  using KeyResult = decltype((std::declval<const T&>().*KeyOf)());
  using Key = std::remove_cvref_t<KeyResult>;

 private:
  struct Slot {
    Key key;
    PackedPointer<T> entry;
  };
  using Chunks = SortedChunks<Slot>;

 public:
  /// Holds the entry it stands on, so that the entry and its key stay good even if it is deleted.
  class Iterator : public SortedWalk {
   public:
    using iterator_category = std::input_iterator_tag;
    /// The key (by value when KeyOf returns it so) and the entry.
    using reference = std::pair<KeyResult, const Brix::Ptr<T>&>;
    using value_type = std::pair<Key, Brix::Ptr<T>>;
    using difference_type = std::ptrdiff_t;
    using pointer = void;

    reference operator*() const noexcept { return {((*current_).*KeyOf)(), current_}; }
    Iterator& operator++() noexcept {
      const Key key = ((*current_).*KeyOf)();
      current_.reset();  // first: what ends with it may change the map
      const auto* const chunks = static_cast<const Chunks*>(done() ? nullptr : owner()->storage());
      if (chunks == nullptr) {
        leave();
        return *this;
      }
      place_ = stale_ ? chunks->below(key) : chunks->after(place_);
      stale_ = false;
      stand(*chunks);
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
    friend class OrderedMap;

    Iterator() noexcept = default;
    Iterator(const Anchor& anchor, const Chunks& chunks) noexcept : SortedWalk(anchor) {
      stand(chunks);
    }
    void stand(const Chunks& chunks) noexcept {
      if (const auto* const slot = chunks.at(place_)) {
        current_ = Brix::Ptr<T>(slot->entry.get());
      } else {
        leave();
      }
    }

    typename Chunks::Place place_;
    Brix::Ptr<T> current_;
  };
  using iterator = Iterator;
  using const_iterator = Iterator;

  OrderedMap() noexcept = default;
  OrderedMap(const OrderedMap&) = delete;
  OrderedMap& operator=(const OrderedMap&) = delete;
  ~OrderedMap() { clear(); }

  /// The entry of this key; null when absent.
  template <class L>
  T* find(const L& key) const noexcept {
    const Chunks* const all = chunks();
    const auto* const slot = all == nullptr ? nullptr : all->find(key);
    return slot == nullptr ? nullptr : slot->entry.get();
  }

  /// Adds an entry whose key is absent. Raises std::bad_alloc and changes nothing (the entry goes)
  /// when there is no memory.
  void insert(Brix::Ptr<T> entry) {
    const Key key = ((*entry).*KeyOf)();
    assert(find(key) == nullptr && "the key is in the map already");
    if (chunks() != nullptr) {
      chunks()->insert({key, PackedPointer<T>(entry.get())});
    } else {
      auto first = std::make_unique<Chunks>();
      first->insert({key, PackedPointer<T>(entry.get())});
      anchor_.storageIs(first.release());
    }
    static_cast<void>(entry.release());
    SortedWalk::changed(anchor_);
  }

  /// Takes the entry out of the map and hands it out; null when absent. The key may be a reference
  /// into the entry.
  template <class L>
  Brix::Ptr<T> take(const L& key) noexcept {
    Chunks* const all = chunks();
    T* const entry = find(key);
    if (entry == nullptr) {
      return nullptr;
    }
    all->erase(key);
    if (all->size() == 0) {
      anchor_.storageIs(nullptr);
      delete all;
    }
    SortedWalk::changed(anchor_);
    return Brix::Ptr<T>(entry, Brix::adopt);
  }

  std::size_t size() const noexcept { return chunks() == nullptr ? 0 : chunks()->size(); }
  bool empty() const noexcept { return chunks() == nullptr; }
  std::size_t heapBytes() const noexcept { return chunks() == nullptr ? 0 : chunks()->heapBytes(); }

  /// Deletes all entries. The map is empty before the first of them ends; what they add to it while
  /// they end is deleted as well.
  void clear() noexcept {
    while (const std::unique_ptr<Chunks> all{chunks()}) {
      anchor_.storageIs(nullptr);
      SortedWalk::changed(anchor_);
      for (typename Chunks::Place place; all->at(place) != nullptr; place = all->after(place)) {
        const Brix::Ptr<T> entry(all->at(place)->entry.get(), Brix::adopt);
      }
    }
  }

  Iterator begin() const noexcept { return empty() ? Iterator() : Iterator(anchor_, *chunks()); }
  Iterator end() const noexcept { return Iterator(); }

 private:
  Chunks* chunks() const noexcept { return static_cast<Chunks*>(anchor_.storage()); }

  Anchor anchor_;
};

}  // namespace Kel
