#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

#include "Kel/BlockMemory.h"
#include "Kel/TableIndex.h"

namespace [[using gnu: visibility("default")]] Kel {

/// The memory of a Table: this head, then an index, then slots without gaps. There is no index for
/// up to 8 slots: comparing them all is faster than hashing.
template <class Slot, class Hash>
class TableBlock {
  static_assert(std::is_trivially_copyable_v<Slot> && alignof(Slot) <= 8);

 public:
  /// A block for `capacity` slots that holds those of `from`, which may be null. Raises
  /// std::bad_alloc.
  [[gnu::noinline]] static TableBlock* copy(const TableBlock* from, std::size_t capacity) {
    if (capacity > kLargest) {
      throw std::bad_array_new_length();
    }
    const auto slots = static_cast<std::uint32_t>(capacity);
    auto* const block = new (BlockMemory::allocate(bytesFor(slots))) TableBlock(slots);
    if (from != nullptr) {
      block->fill(*from);
    } else if (block->indexed()) {
      block->buildIndex();
    }
    return block;
  }
  static void free(TableBlock* block) noexcept {
    if (block != nullptr) {
      BlockMemory::deallocate(block, block->bytes());
    }
  }

  /// Takes over the slots of `from`, in the place of its own; there is room for them.
  void fill(const TableBlock& from) noexcept {
    size_ = from.size_;
    std::memcpy(static_cast<void*>(slots()), from.slots(), size_ * sizeof(Slot));
    if (indexBits_ == from.indexBits_) {
      std::memcpy(words(), from.words(), indexBytes(indexBits_));
    } else if (indexed()) {
      buildIndex();
    }
  }

  /// The capacity to grow to: as many slots as 16 bytes hold, then doubled; from the index on, half
  /// as many more, and then up to the next power of two, so that every second step needs a new
  /// index.
  static constexpr std::uint32_t capacityAbove(std::uint32_t capacity) noexcept {
    constexpr auto kFirst =
        static_cast<std::uint32_t>(std::clamp<std::size_t>(16 / sizeof(Slot), 1, kUnindexed));
    if (capacity < kUnindexed) {
      return std::max(kFirst, std::min(2 * capacity, kUnindexed));
    }
    return std::has_single_bit(capacity) ? capacity + capacity / 2 : std::bit_ceil(capacity);
  }

  std::uint32_t size() const noexcept { return size_; }
  std::uint32_t capacity() const noexcept { return capacity_; }
  std::size_t bytes() const noexcept { return bytesFor(capacity_); }
  bool indexed() const noexcept { return indexBits_ != 0; }
  Slot* slots() const noexcept { return reinterpret_cast<Slot*>(words() + indexBytes(indexBits_)); }

  /// The slot of this hash for which `same` holds; null when there is none. `hash` matters only to
  /// an index.
  template <class Same>
  Slot* find(std::uint32_t hash, Same same) const noexcept {
    Slot* const all = slots();
    if (!indexed()) {
      for (Slot* slot = all; slot != all + size_; ++slot) {
        if (same(*slot)) {
          return slot;
        }
      }
      return nullptr;
    }
    return withIndex([&](const auto& index) -> Slot* {
      const auto* const word = index.find(hash, [&](std::uint32_t at) { return same(all[at]); });
      return word == nullptr ? nullptr : all + index.position(word);
    });
  }

  /// Adds a slot that is not there yet; there is room for it.
  void append(const Slot& slot, std::uint32_t hash) noexcept {
    slots()[size_] = slot;
    if (indexed()) {
      withIndex([&](const auto& index) { index.add(hash, size_); });
    }
    ++size_;
  }

  /// Does what find() does, and takes the slot out of the index. It stays where it is, until
  /// something is moved there.
  template <class Same>
  Slot* strike(std::uint32_t hash, Same same) noexcept {
    if (!indexed()) {
      return find(hash, same);
    }
    Slot* const all = slots();
    return withIndex([&](const auto& index) -> Slot* {
      auto* const word = index.find(hash, [&](std::uint32_t at) { return same(all[at]); });
      if (word == nullptr) {
        return nullptr;
      }
      Slot* const slot = all + index.position(word);
      index.erase(word, [all](std::uint32_t at) { return Hash{}(all[at]); });
      return slot;
    });
  }
  void move(std::uint32_t from, std::uint32_t to) noexcept {
    if (from != to) {
      Slot* const all = slots();
      if (indexed()) {
        withIndex([&](const auto& index) { index.move(Hash{}(all[from]), from, to); });
      }
      all[to] = all[from];
    }
  }
  void dropLast() noexcept { --size_; }

 private:
  static constexpr std::uint32_t kUnindexed = 8;
  static constexpr std::uint32_t kNarrow = 7;  // up to 128 words the words have 16 bits
  static constexpr std::uint32_t kLargest = 1U << 26U;

  explicit TableBlock(std::uint32_t capacity) noexcept
      : capacity_(capacity & 0x7FF'FFFFU), indexBits_(indexBitsFor(capacity) & 31U) {}

  // The number of words of the index is 2 to the power of this: at most half of them are used. 0:
  // there is no index.
  static constexpr std::uint32_t indexBitsFor(std::uint32_t capacity) noexcept {
    return capacity <= kUnindexed ? 0U
                                  : static_cast<std::uint32_t>(std::bit_width(capacity - 1)) + 1;
  }
  static constexpr std::size_t indexBytes(std::uint32_t bits) noexcept {
    const std::size_t bytes = bits <= kNarrow ? sizeof(std::uint16_t) : sizeof(std::uint32_t);
    return bits == 0 ? 0 : bytes << bits;
  }
  static constexpr std::size_t bytesFor(std::uint32_t capacity) noexcept {
    return sizeof(TableBlock) + indexBytes(indexBitsFor(capacity)) + capacity * sizeof(Slot);
  }

  std::byte* words() const noexcept {
    return reinterpret_cast<std::byte*>(const_cast<TableBlock*>(this) + 1);
  }
  template <class Use>
  auto withIndex(Use use) const {
    return indexBits_ <= kNarrow
               ? use(TableIndex(reinterpret_cast<std::uint16_t*>(words()), indexBits_))
               : use(TableIndex(reinterpret_cast<std::uint32_t*>(words()), indexBits_));
  }
  void buildIndex() noexcept {
    std::memset(words(), 0xFF, indexBytes(indexBits_));
    withIndex([this](const auto& index) {
      const Slot* const all = slots();
      for (std::uint32_t at = 0; at != size_; ++at) {
        index.add(Hash{}(all[at]), at);
      }
    });
  }

  std::uint32_t size_ = 0;
  std::uint32_t capacity_ : 27;
  std::uint32_t indexBits_ : 5;
};

}  // namespace Kel
