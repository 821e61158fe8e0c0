#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

#include "Kel/TableIndex.h"
#include "Kel/TableWalk.h"

namespace Kel {

/// What Set and EntryMap have in common: slots without gaps, in the order of insertion until one is
/// erased, in one block of memory: a head, an index (none up to `kUnindexed` slots, as comparing
/// them all is faster than hashing), and the slots.
///
/// Positions survive growth; a deletion moves other slots as the walks under way require (Walk.h).
/// `Hash` is a function object that returns the hash of a slot.
template <class Slot, class Hash>
class Table {
  static_assert(std::is_trivially_copyable_v<Slot> && alignof(Slot) <= 8);

 public:
  struct Block {
    std::uint32_t size;
    std::uint32_t capacity;
  };

  Table() noexcept = default;
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;
  ~Table() { free(detach()); }

  const Anchor& anchor() const noexcept { return anchor_; }
  /// Null when the table owns no memory.
  Block* block() const noexcept { return static_cast<Block*>(anchor_.storage()); }
  std::uint32_t size() const noexcept { return sizeOf(block()); }
  std::size_t heapBytes() const noexcept {
    return block() == nullptr ? 0 : bytesOf(block()->capacity);
  }
  /// Whether look-ups need the hash of the key.
  bool indexed() const noexcept { return block() != nullptr && isIndexed(block()); }

  static std::uint32_t sizeOf(const Block* block) noexcept {
    return block == nullptr ? 0 : block->size;
  }
  static Slot* slotsOf(Block* block) noexcept {
    return reinterpret_cast<Slot*>(reinterpret_cast<std::byte*>(block + 1) +
                                   indexBytes(block->capacity));
  }
  static void free(Block* block) noexcept { ::operator delete(block); }

  /// The slot of this hash for which `same` holds; null when there is none. `hash` matters only
  /// when the table is indexed.
  template <class Same>
  const Slot* find(std::uint32_t hash, Same same) const noexcept {
    Block* const all = block();
    if (all == nullptr) {
      return nullptr;
    }
    const Slot* const slots = slotsOf(all);
    if (!isIndexed(all)) {
      return findUnindexed(slots, all->size, same);
    }
    return withIndex(all, [&](const auto& index) -> const Slot* {
      const auto* const word = index.find(hash, [&](std::uint32_t at) { return same(slots[at]); });
      return word == nullptr ? nullptr : slots + index.position(word);
    });
  }

  /// Adds a slot that is not there yet. Raises std::bad_alloc and changes nothing when there is no
  /// memory. `hash` matters only when the table is indexed.
  void append(Slot slot, std::uint32_t hash) {
    Block* all = block();
    if (all == nullptr || all->size == all->capacity) [[unlikely]] {
      const bool hashed = indexed();
      all = relocate(next(all == nullptr ? 0 : all->capacity));
      if (!hashed && isIndexed(all)) {
        hash = Hash{}(slot);
      }
    }
    slotsOf(all)[all->size] = slot;
    if (isIndexed(all)) {
      withIndex(all, [&](const auto& index) { index.add(hash, all->size); });
    }
    ++all->size;
  }

  /// Takes the slot away that find() would find, and copies it to `taken`; false when there is
  /// none.
  template <class Same>
  bool take(std::uint32_t hash, Same same, Slot& taken) noexcept {
    Block* const all = block();
    if (all == nullptr) {
      return false;
    }
    Slot* const slots = slotsOf(all);
    const Slot* found = nullptr;
    if (isIndexed(all)) {
      found = withIndex(all, [&](const auto& index) -> const Slot* {
        auto* const word = index.find(hash, [&](std::uint32_t at) { return same(slots[at]); });
        if (word == nullptr) {
          return nullptr;
        }
        const Slot* const slot = slots + index.position(word);
        index.erase(word, [slots](std::uint32_t at) { return Hash{}(slots[at]); });
        return slot;
      });
    } else {
      found = findUnindexed(slots, all->size, same);
    }
    if (found == nullptr) {
      return false;
    }
    taken = *found;
    closeUp(all, static_cast<std::uint32_t>(found - slots));
    return true;
  }

  /// Makes room for `size` slots, not more.
  void reserve(std::size_t size) {
    if (size > (block() == nullptr ? 0 : block()->capacity)) {
      relocate(size);
    }
  }

  /// Empties the table and brings its walks to their end; the block is the caller's to free.
  Block* detach() noexcept {
    Block* const all = block();
    TableWalk::clear(anchor_);
    anchor_.storageIs(nullptr);
    return all;
  }

 private:
  static constexpr std::uint32_t kUnindexed = 8;
  static constexpr std::uint32_t kNarrow = 128;  // the most words of an index of 16-bit words
  static constexpr std::uint32_t kLargest = 1U << 30U;

  static bool isIndexed(const Block* block) noexcept { return block->capacity > kUnindexed; }

  // The words of the index: a power of two, of which at most half are used.
  static constexpr std::uint32_t wordsOf(std::uint32_t capacity) noexcept {
    return 2 * std::bit_ceil(capacity);
  }
  static constexpr std::size_t indexBytes(std::uint32_t capacity) noexcept {
    if (capacity <= kUnindexed) {
      return 0;
    }
    const std::size_t words = wordsOf(capacity);
    return words <= kNarrow ? words * sizeof(std::uint16_t) : words * sizeof(std::uint32_t);
  }
  static constexpr std::size_t bytesOf(std::uint32_t capacity) noexcept {
    return sizeof(Block) + indexBytes(capacity) + capacity * sizeof(Slot);
  }

  // As many slots as 16 bytes hold, then doubled; from the index on, in steps of half as many more
  // and again up to the next power of two, of which only every second needs a new index.
  static constexpr std::uint32_t next(std::uint32_t capacity) noexcept {
    constexpr auto kFirst =
        static_cast<std::uint32_t>(std::clamp<std::size_t>(16 / sizeof(Slot), 1, kUnindexed));
    if (capacity < kUnindexed) {
      return std::max(kFirst, std::min(2 * capacity, kUnindexed));
    }
    return std::has_single_bit(capacity) ? capacity + capacity / 2 : std::bit_ceil(capacity);
  }

  template <class Same>
  static const Slot* findUnindexed(const Slot* slots, std::uint32_t size, Same same) noexcept {
    for (const Slot* slot = slots; slot != slots + size; ++slot) {
      if (same(*slot)) {
        return slot;
      }
    }
    return nullptr;
  }

  template <class Use>
  static auto withIndex(Block* block, Use use) {
    const std::uint32_t words = wordsOf(block->capacity);
    return words <= kNarrow
               ? use(TableIndex(reinterpret_cast<std::uint16_t*>(block + 1), words - 1))
               : use(TableIndex(reinterpret_cast<std::uint32_t*>(block + 1), words - 1));
  }

  // Moves everything to a block for `size` slots.
  [[gnu::noinline]] Block* relocate(std::size_t size) {
    if (size > kLargest) {
      throw std::bad_array_new_length();
    }
    const auto capacity = static_cast<std::uint32_t>(size);
    Block* const old = block();
    Block* const all = new (::operator new(bytesOf(capacity))) Block{sizeOf(old), capacity};
    if (old != nullptr) {
      std::memcpy(static_cast<void*>(slotsOf(all)), slotsOf(old), old->size * sizeof(Slot));
    }
    if (isIndexed(all)) {
      if (old != nullptr && isIndexed(old) && wordsOf(old->capacity) == wordsOf(capacity)) {
        std::memcpy(all + 1, old + 1, indexBytes(capacity));
      } else {
        buildIndex(all);
      }
    }
    anchor_.storageIs(all);
    TableWalk::moved(anchor_, reinterpret_cast<const std::byte*>(slotsOf(all)));
    free(old);
    return all;
  }

  static void buildIndex(Block* all) noexcept {
    std::memset(static_cast<void*>(all + 1), 0xFF, indexBytes(all->capacity));
    withIndex(all, [all](const auto& index) {
      const Slot* const slots = slotsOf(all);
      for (std::uint32_t at = 0; at != all->size; ++at) {
        index.add(Hash{}(slots[at]), at);
      }
    });
  }

  // Fills the hole at a position, the word for which has left the index.
  void closeUp(Block* all, std::uint32_t hole) noexcept {
    if (anchor_.walks() != nullptr) [[unlikely]] {
      hole = TableWalk::closeUp(
          anchor_, hole, [all](std::uint32_t from, std::uint32_t to) { move(all, from, to); });
    }
    move(all, --all->size, hole);
    if (all->size == 0) {
      anchor_.storageIs(nullptr);
      free(all);
    }
  }

  static void move(Block* all, std::uint32_t from, std::uint32_t to) noexcept {
    if (from != to) {
      Slot* const slots = slotsOf(all);
      if (isIndexed(all)) {
        withIndex(all, [&](const auto& index) { index.move(Hash{}(slots[from]), from, to); });
      }
      slots[to] = slots[from];
    }
  }

  Anchor anchor_;
};

}  // namespace Kel
