#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

namespace [[using gnu: visibility("default")]] Kel {

/// Slots sorted by their member `key`, highest first, in chunks of up to 64. An insertion moves at
/// most one chunk and one line of the directory, so that any number of slots may come in any order.
template <class Slot>
class SortedChunks {
  static_assert(std::is_trivially_copyable_v<Slot>);

 public:
  /// Where a slot is, as long as nothing is inserted or erased; at first the highest.
  struct Place {
    std::uint32_t chunk = 0;
    std::uint32_t slot = 0;
  };

  std::size_t size() const noexcept { return size_; }
  std::size_t heapBytes() const noexcept {
    std::size_t bytes = sizeof(*this) + chunks_.capacity() * sizeof(Chunk);
    for (const Chunk& chunk : chunks_) {
      bytes += chunk.slots.capacity() * sizeof(Slot);
    }
    return bytes;
  }

  /// Null behind the last slot.
  const Slot* at(Place place) const noexcept {
    return place.chunk < chunks_.size() ? &chunks_[place.chunk].slots[place.slot] : nullptr;
  }
  Place after(Place place) const noexcept {
    ++place.slot;
    return normal(place);
  }
  /// The highest slot below `key`, which need not be there.
  template <class L>
  Place below(const L& key) const noexcept {
    Place place = lowerBound(key);
    if (const Slot* const slot = at(place); slot != nullptr && slot->key == key) {
      place = after(place);
    }
    return place;
  }
  template <class L>
  const Slot* find(const L& key) const noexcept {
    const Slot* const slot = at(lowerBound(key));
    return slot != nullptr && slot->key == key ? slot : nullptr;
  }

  /// Adds a slot whose key is not there. Raises std::bad_alloc and changes nothing when there is no
  /// memory.
  void insert(const Slot& slot) {
    Place place = lowerBound(slot.key);
    if (place.chunk != 0 && place.slot == 0) {  // rather behind the chunk above
      place = {place.chunk - 1, static_cast<std::uint32_t>(chunks_[place.chunk - 1].slots.size())};
    }
    if (chunks_.empty()) {
      Chunk first{slot.key, {slot}};
      chunks_.push_back(std::move(first));
    } else {
      if (chunks_[place.chunk].slots.size() == kChunk) {
        place = split(place);
      }
      Chunk& chunk = chunks_[place.chunk];
      chunk.slots.insert(chunk.slots.begin() + place.slot, slot);
      chunk.highest = chunk.slots.front().key;
    }
    ++size_;
  }

  /// Takes the slot of `key`, which is there, away.
  template <class L>
  void erase(const L& key) noexcept {
    const Place place = lowerBound(key);
    std::vector<Slot>& slots = chunks_[place.chunk].slots;
    slots.erase(slots.begin() + place.slot);
    --size_;
    if (slots.empty()) {
      chunks_.erase(chunks_.begin() + place.chunk);
      return;
    }
    chunks_[place.chunk].highest = slots.front().key;
    mergeWithNext(place.chunk);
    if (place.chunk != 0) {
      mergeWithNext(place.chunk - 1);
    }
  }

 private:
  static constexpr std::size_t kChunk = 64;
  using Key = decltype(Slot::key);

  struct Chunk {
    Key highest;
    std::vector<Slot> slots;  // never empty
  };

  // In a place behind the last slot of a chunk stands the first of the next.
  Place normal(Place place) const noexcept {
    return place.slot < chunks_[place.chunk].slots.size() ? place : Place{place.chunk + 1, 0};
  }

  // How many of the first slots or chunks come before the place that is looked for. The halving has
  // no branch that could be predicted wrongly.
  template <class Element, class IsBefore>
  static std::uint32_t countBefore(const std::vector<Element>& all, IsBefore isBefore) noexcept {
    const Element* first = all.data();
    std::size_t size = all.size();
    while (size > 1) {
      const std::size_t half = size / 2;
      first += half * static_cast<std::size_t>(isBefore(first[half - 1]));
      size -= half;
    }
    const bool last = size == 1 && isBefore(*first);
    return static_cast<std::uint32_t>(first - all.data()) + (last ? 1U : 0U);
  }

  // Where `key` is or would be.
  template <class L>
  Place lowerBound(const L& key) const noexcept {
    const std::uint32_t chunks =
        countBefore(chunks_, [&key](const Chunk& chunk) { return (chunk.highest <=> key) >= 0; });
    if (chunks == 0) {
      return {};
    }
    const std::uint32_t slots = countBefore(
        chunks_[chunks - 1].slots, [&key](const Slot& slot) { return (slot.key <=> key) > 0; });
    return normal({chunks - 1, slots});
  }

  // Makes room in a full chunk; returns the place again. At an end of the whole a new chunk is
  // begun, so that slots that come in order leave full chunks behind.
  Place split(Place place) {
    const bool first = place.chunk == 0 && place.slot == 0;
    const bool last = place.chunk + 1 == chunks_.size() && place.slot == kChunk;
    const std::size_t keep = first ? 0 : last ? kChunk : kChunk / 2;
    Chunk rest{chunks_[place.chunk].highest, {}};
    rest.slots.reserve(kChunk);
    const auto at = chunks_.insert(chunks_.begin() + place.chunk + 1, std::move(rest));
    std::vector<Slot>& slots = (at - 1)->slots;
    at->slots.assign(slots.begin() + static_cast<std::ptrdiff_t>(keep), slots.end());
    slots.resize(keep);
    if (!at->slots.empty()) {
      at->highest = at->slots.front().key;
    }
    return place.slot <= keep && !last
               ? place
               : Place{place.chunk + 1, place.slot - static_cast<std::uint32_t>(keep)};
  }

  void mergeWithNext(std::uint32_t chunk) noexcept {
    if (chunk + 1 >= chunks_.size() ||
        chunks_[chunk].slots.size() + chunks_[chunk + 1].slots.size() > kChunk / 2) {
      return;
    }
    std::vector<Slot>& slots = chunks_[chunk].slots;  // of full capacity, as there are two chunks
    slots.insert(slots.end(), chunks_[chunk + 1].slots.begin(), chunks_[chunk + 1].slots.end());
    chunks_.erase(chunks_.begin() + chunk + 1);
  }

  std::vector<Chunk> chunks_;
  std::size_t size_ = 0;
};

}  // namespace Kel
