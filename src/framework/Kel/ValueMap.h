#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Kel/SortedWalk.h"

namespace [[using gnu: visibility("default")]] Kel {

/// A map of few values, sorted by key and walked from the lowest key to the highest. One pointer
/// wide and without memory while it is empty.
///
/// Keys are ordered by <=>; keys and values move without raising. Walks may be nested, and
/// everything may happen to the map meanwhile (see Walk.h): a walk over a map that has changed goes
/// on at the next higher key. So an entry inserted during the walk is visited when its turn is
/// still to come.
template <class K, class V>
class ValueMap {
 public:
  /// Stands on copies of the key and the value, which stay good whatever happens to the map.
  class Iterator : public SortedWalk {
   public:
    using iterator_category = std::input_iterator_tag;
    using reference = std::pair<const K&, const V&>;
    using value_type = std::pair<K, V>;
    using difference_type = std::ptrdiff_t;
    using pointer = void;

    reference operator*() const noexcept { return {current_->first, current_->second}; }
    Iterator& operator++() {
      const Entries* const all = done() ? nullptr : static_cast<Entries*>(owner()->storage());
      at_ = stale_ && all != nullptr ? above(*all, current_->first) : at_ + 1;
      stale_ = false;
      stand(all);
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    /// Tells only whether both walks are done or neither is.
    bool operator==(const Iterator& other) const noexcept { return done() == other.done(); }

   private:
    friend class ValueMap;

    Iterator() noexcept = default;
    Iterator(const Anchor& anchor, const std::vector<std::pair<K, V>>* all) : SortedWalk(anchor) {
      stand(all);
    }
    void stand(const std::vector<std::pair<K, V>>* all) {
      if (all == nullptr || at_ == all->size()) {
        leave();
      } else {
        current_.emplace((*all)[at_]);
      }
    }

    std::size_t at_ = 0;
    std::optional<std::pair<K, V>> current_;
  };
  using iterator = Iterator;
  using const_iterator = Iterator;

  ValueMap() noexcept = default;
  ValueMap(const ValueMap&) = delete;
  ValueMap& operator=(const ValueMap&) = delete;
  ~ValueMap() { clear(); }

  /// The value of this key; null when absent. Good until the map changes.
  /// The value of this key, which may be of any type that compares equal to keys; null when absent.
  /// Good until the map changes.
  template <class L>
  const V* find(const L& key) const noexcept {
    const Entries* const all = entries();
    const std::size_t at = all == nullptr ? 0 : positionOf(*all, key);
    return all == nullptr || at == all->size() ? nullptr : &(*all)[at].second;
  }

  /// Writes the value of this key; returns true when that created it. Raises std::bad_alloc and
  /// changes nothing when there is no memory.
  bool put(const K& key, const V& value) {
    std::pair<K, V> entry(key, value);  // a copy: both may be references into this map
    if (empty()) {
      auto first = std::make_unique<Entries>();
      first->push_back(std::move(entry));
      anchor_.storageIs(first.release());
    } else {
      Entries& all = *entries();
      const auto at = all.begin() + static_cast<std::ptrdiff_t>(notBelow(all, entry.first));
      if (at != all.end() && at->first == entry.first) {
        at->second = std::move(entry.second);
        return false;
      }
      all.insert(at, std::move(entry));
    }
    SortedWalk::changed(anchor_);
    return true;
  }

  /// Returns true when the key was there. The key may be a reference into this map.
  template <class L>
  bool erase(const L& key) noexcept {
    Entries* const all = entries();
    const std::size_t at = all == nullptr ? 0 : positionOf(*all, key);
    if (all == nullptr || at == all->size()) {
      return false;
    }
    all->erase(all->begin() + static_cast<std::ptrdiff_t>(at));
    SortedWalk::changed(anchor_);
    if (all->empty()) {
      clear();
    }
    return true;
  }

  std::size_t size() const noexcept { return empty() ? 0 : entries()->size(); }
  bool empty() const noexcept { return entries() == nullptr; }
  /// Without what keys and values own themselves.
  std::size_t heapBytes() const noexcept {
    return empty() ? 0 : sizeof(Entries) + entries()->capacity() * sizeof(std::pair<K, V>);
  }
  void clear() noexcept {
    const std::unique_ptr<Entries> all(entries());
    anchor_.storageIs(nullptr);
    SortedWalk::changed(anchor_);
  }

  Iterator begin() const { return empty() ? Iterator() : Iterator(anchor_, entries()); }
  Iterator end() const noexcept { return Iterator(); }

 private:
  using Entries = std::vector<std::pair<K, V>>;

  Entries* entries() const noexcept { return static_cast<Entries*>(anchor_.storage()); }

  template <class L>
  static std::size_t positionOf(const Entries& all, const L& key) noexcept {
    const auto at = std::find_if(all.begin(), all.end(),
                                 [&key](const auto& entry) { return entry.first == key; });
    return static_cast<std::size_t>(at - all.begin());
  }
  static std::size_t notBelow(const Entries& all, const K& key) noexcept {
    const auto at = std::partition_point(
        all.begin(), all.end(), [&key](const auto& entry) { return (entry.first <=> key) < 0; });
    return static_cast<std::size_t>(at - all.begin());
  }
  static std::size_t above(const Entries& all, const K& key) noexcept {
    const std::size_t at = notBelow(all, key);
    return at != all.size() && all[at].first == key ? at + 1 : at;
  }

  Anchor anchor_;
};

}  // namespace Kel
