#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

#include "Kel/Walk.h"

namespace Kel {

/// A walk over a Table: the slots before `at` have had their turn, those from `end` on were
/// inserted after it began. Everything that moves slots keeps both true.
class TableWalk : public Walk {
 protected:
  TableWalk() noexcept = default;
  TableWalk(const Anchor& table, const std::byte* slots, std::uint32_t size) noexcept
      : Walk(table), slots_(slots), end_(size) {}

  const std::byte* slots_ = nullptr;
  std::uint32_t at_ = 0;
  std::uint32_t end_ = 0;

 private:
  template <class Slot, class Hash>
  friend class Table;
};

/// What Set and EntryMap have in common: slots without gaps, in one block of memory.
///
/// The block is a head, the index (none up to `kUnindexed` slots: comparing them all is faster than
/// hashing), and the slots. A word of the index holds the position of a slot in its low bits, as
/// many as the index needs, and in the others the same bits of the slot's hash; the low bits of the
/// hash say where in the index the search begins. All ones is an empty word. Nothing is ever left
/// behind by a deletion: the words behind it close up, so a table does not age.
///
/// Positions survive growth; a deletion moves other slots as the walks under way require (Walk.h).
template <class Slot, class Hash>
class Table {
  static_assert(std::is_trivially_copyable_v<Slot> && alignof(Slot) <= 8);

 public:
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

  Table() noexcept = default;
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;
  ~Table() { free(detach()); }

  std::uint32_t size() const noexcept { return head() == nullptr ? 0 : head()->size; }
  /// Whether look-ups need the hash of the key.
  bool indexed() const noexcept { return head() != nullptr && head()->capacity > kUnindexed; }
  std::size_t heapBytes() const noexcept {
    return head() == nullptr ? 0 : bytesOf(head()->capacity);
  }
  Slot* slots() const noexcept { return slotsOf(head()); }
  const Anchor& anchor() const noexcept { return anchor_; }

  /// The position of the slot of this hash for which `same` holds; kNone when there is none.
  template <class Same>
  std::uint32_t find(std::uint32_t hash, Same same) const noexcept {
    const Head* const block = head();
    if (block == nullptr) {
      return kNone;
    }
    const Slot* const slots = slotsOf(block);
    if (block->capacity <= kUnindexed) {
      for (std::uint32_t at = 0; at != block->size; ++at) {
        if (same(slots[at])) {
          return at;
        }
      }
      return kNone;
    }
    const std::uint32_t mask = maskOf(block->capacity);
    const std::uint32_t* const index = indexOf(block);
    for (std::uint32_t word = hash & mask;; word = (word + 1) & mask) {
      if (((index[word] ^ hash) & ~mask) == 0 && index[word] != kEmpty) {
        if (same(slots[index[word] & mask])) {
          return index[word] & mask;
        }
      } else if (index[word] == kEmpty) {
        return kNone;
      }
    }
  }

  /// Adds a slot that is not there yet. Raises std::bad_alloc and changes nothing when there is no
  /// memory. `hash` matters only when the table is indexed.
  void append(Slot slot, std::uint32_t hash) {
    Head* block = head();
    if (block == nullptr || block->size == block->capacity) [[unlikely]] {
      const bool hashed = indexed();
      block = relocate(next(block == nullptr ? 0 : block->capacity));
      if (!hashed && indexed()) {
        hash = Hash{}(slot);
      }
    }
    slotsOf(block)[block->size] = slot;
    if (block->capacity > kUnindexed) {
      file(block, block->size, hash);
    }
    ++block->size;
  }

  void reserve(std::size_t wanted) {
    if (wanted > (head() == nullptr ? 0 : head()->capacity)) {
      relocate(wanted);
    }
  }

  /// Takes the slot at `position` away.
  void erase(std::uint32_t position) noexcept {
    Head* const block = head();
    if (block->capacity > kUnindexed) {
      unfile(block, position);
    }
    std::uint32_t hole = position;
    if (anchor_.walks() != nullptr) {
      hole = moveBoundaries(block, hole);
    }
    move(block, block->size - 1, hole);
    if (--block->size == 0) {
      anchor_.storageIs(nullptr);
      free(block);
    }
  }

 private:
  static constexpr std::uint32_t kUnindexed = 8;
  static constexpr std::uint32_t kEmpty = std::numeric_limits<std::uint32_t>::max();
  static constexpr std::uint32_t kLargest = 1U << 30U;

  struct Head {
    std::uint32_t size;
    std::uint32_t capacity;
  };

 public:
  /// A block that no longer belongs to the table; the table is empty and its walks are at their
  /// end.
  Head* detach() noexcept {
    Head* const block = head();
    forEachWalk([](TableWalk& walk) { walk.at_ = walk.end_ = 0; });
    anchor_.storageIs(nullptr);
    return block;
  }
  static void free(Head* block) noexcept { ::operator delete(block); }
  static std::uint32_t sizeOf(const Head* block) noexcept {
    return block == nullptr ? 0 : block->size;
  }
  static Slot* slotsOf(const Head* block) noexcept {
    return reinterpret_cast<Slot*>(indexOf(block) + wordsOf(block->capacity));
  }

 private:
  // One less than the words of the index: a power of two, at most two thirds of which are used.
  static constexpr std::uint32_t maskOf(std::uint32_t capacity) noexcept {
    return kNone >> std::countl_zero(capacity + capacity / 2);
  }
  static constexpr std::uint32_t wordsOf(std::uint32_t capacity) noexcept {
    return capacity <= kUnindexed ? 0 : maskOf(capacity) + 1;
  }
  static constexpr std::size_t bytesOf(std::size_t capacity) noexcept {
    return sizeof(Head) + wordsOf(static_cast<std::uint32_t>(capacity)) * sizeof(std::uint32_t) +
           capacity * sizeof(Slot);
  }
  static std::uint32_t* indexOf(const Head* block) noexcept {
    return reinterpret_cast<std::uint32_t*>(const_cast<Head*>(block) + 1);
  }

  // As many slots as 16 bytes hold, then doubled; from the index on, as many as it has room for
  // without growing, then one and a half times as many with an index of twice the size.
  static constexpr std::uint32_t next(std::uint32_t capacity) noexcept {
    constexpr auto kFirst =
        static_cast<std::uint32_t>(std::clamp<std::size_t>(16 / sizeof(Slot), 1, kUnindexed));
    if (capacity < kUnindexed) {
      return std::max(kFirst, 2 * capacity);
    }
    const std::uint32_t words = maskOf(capacity) + 1;
    const std::uint32_t full = words / 3 * 2 + words % 3 * 2 / 3;
    return capacity < full ? full : words;
  }

  Head* head() const noexcept { return static_cast<Head*>(anchor_.storage()); }

  template <class Visit>
  void forEachWalk(Visit visit) noexcept {
    for (Walk* walk = anchor_.walks(); walk != nullptr; walk = walk->next()) {
      visit(*static_cast<TableWalk*>(walk));
    }
  }

  // Moves everything to a block for `wanted` slots.
  [[gnu::noinline]] Head* relocate(std::size_t wanted) {
    if (wanted > kLargest) {
      throw std::bad_array_new_length();
    }
    const auto capacity = static_cast<std::uint32_t>(wanted);
    Head* const old = head();
    Head* const block = new (::operator new(bytesOf(capacity))) Head{sizeOf(old), capacity};
    if (old != nullptr) {
      std::memcpy(static_cast<void*>(slotsOf(block)), slotsOf(old), old->size * sizeof(Slot));
    }
    if (const std::uint32_t words = wordsOf(capacity); words != 0) {
      if (old != nullptr && wordsOf(old->capacity) == words) {
        std::memcpy(indexOf(block), indexOf(old), words * sizeof(std::uint32_t));
      } else {
        std::fill_n(indexOf(block), words, kEmpty);
        for (std::uint32_t at = 0; at != block->size; ++at) {
          file(block, at, Hash{}(slotsOf(block)[at]));
        }
      }
    }
    anchor_.storageIs(block);
    forEachWalk([block](TableWalk& walk) {
      walk.slots_ = reinterpret_cast<const std::byte*>(slotsOf(block));
    });
    free(old);
    return block;
  }

  static void file(Head* block, std::uint32_t position, std::uint32_t hash) noexcept {
    const std::uint32_t mask = maskOf(block->capacity);
    std::uint32_t word = hash & mask;
    while (indexOf(block)[word] != kEmpty) {
      word = (word + 1) & mask;
    }
    indexOf(block)[word] = (hash & ~mask) | position;
  }

  // The place in the index of the word for the slot at `position`.
  static std::uint32_t* wordOf(Head* block, std::uint32_t position) noexcept {
    const std::uint32_t mask = maskOf(block->capacity);
    const std::uint32_t hash = Hash{}(slotsOf(block)[position]);
    std::uint32_t word = hash & mask;
    while (indexOf(block)[word] != ((hash & ~mask) | position)) {
      word = (word + 1) & mask;
    }
    return indexOf(block) + word;
  }

  // Takes the word for `position` out of the index; words behind it that are only there because
  // their place was taken move up.
  static void unfile(Head* block, std::uint32_t position) noexcept {
    const std::uint32_t mask = maskOf(block->capacity);
    std::uint32_t* const index = indexOf(block);
    auto hole = static_cast<std::uint32_t>(wordOf(block, position) - index);
    for (std::uint32_t at = (hole + 1) & mask; index[at] != kEmpty; at = (at + 1) & mask) {
      const std::uint32_t home = Hash{}(slotsOf(block)[index[at] & mask]) & mask;
      if (((at - home) & mask) >= ((at - hole) & mask)) {
        index[hole] = index[at];
        hole = at;
      }
    }
    index[hole] = kEmpty;
  }

  static void move(Head* block, std::uint32_t from, std::uint32_t to) noexcept {
    if (from == to) {
      return;
    }
    if (block->capacity > kUnindexed) {
      std::uint32_t* const word = wordOf(block, from);
      *word = (*word & ~maskOf(block->capacity)) | to;
    }
    slotsOf(block)[to] = slotsOf(block)[from];
  }

  // Lowers every boundary of a walk above the hole by one, and returns where the hole is then.
  [[gnu::noinline]] std::uint32_t moveBoundaries(Head* block, std::uint32_t hole) noexcept {
    for (;;) {
      std::uint32_t lowest = kNone;
      const auto consider = [&](std::uint32_t boundary) {
        if (boundary > hole) {
          lowest = std::min(lowest, boundary);
        }
      };
      forEachWalk([&](TableWalk& walk) { consider(walk.at_), consider(walk.end_); });
      if (lowest == kNone) {
        return hole;
      }
      forEachWalk([&](TableWalk& walk) {
        walk.at_ -= walk.at_ == lowest ? 1 : 0;
        walk.end_ -= walk.end_ == lowest ? 1 : 0;
      });
      move(block, lowest - 1, hole);
      hole = lowest - 1;
    }
  }

  Anchor anchor_;
};

}  // namespace Kel
