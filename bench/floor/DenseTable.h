#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace Bench {

/// A hash table reduced to what a mirror needs: slots in the order of insertion in one block with
/// an index of 32-bit words, whose high bits are those of the hash. One pointer wide; up to 8 slots
/// have no index. No walk is safe against changes.
template <class Slot, class KeyOf>
class DenseTable {
  static_assert(std::is_trivially_copyable_v<Slot>);

 public:
  DenseTable() = default;
  DenseTable(const DenseTable&) = delete;
  DenseTable& operator=(const DenseTable&) = delete;
  ~DenseTable() { std::free(block_); }

  std::uint32_t size() const { return block_ == nullptr ? 0 : block_->size; }
  Slot* begin() const { return block_ == nullptr ? nullptr : slots(); }
  Slot* end() const { return begin() + size(); }

  template <class Key>
  Slot* find(const Key& key) const {
    if (block_ == nullptr) {
      return nullptr;
    }
    if (block_->capacity <= kUnindexed) {
      Slot* const found =
          std::find_if(begin(), end(), [&](const Slot& slot) { return KeyOf{}(slot) == key; });
      return found == end() ? nullptr : found;
    }
    const std::uint32_t* const word = wordOf(key.hash(), key);
    return *word == kNone ? nullptr : slots() + (*word & mask());
  }

  /// The key is absent.
  void append(const Slot& slot) {
    if (block_ == nullptr || block_->size == block_->capacity) {
      reserve(block_ == nullptr ? 2 : 2 * block_->capacity);
    }
    slots()[block_->size] = slot;
    if (block_->capacity > kUnindexed) {
      enter(block_->size);
    }
    ++block_->size;
  }

  template <class Key>
  bool erase(const Key& key) {
    if (block_ == nullptr) {
      return false;
    }
    Slot* slot = nullptr;
    const std::uint32_t last = block_->size - 1;
    if (block_->capacity <= kUnindexed) {
      slot = find(key);
    } else if (std::uint32_t* const word = wordOf(key.hash(), key); *word != kNone) {
      const std::uint32_t position = *word & mask();
      slot = slots() + position;
      close(word);
      if (position != last) {
        std::uint32_t* const moved = wordOfPosition(KeyOf{}(slots()[last]).hash(), last);
        *moved = (*moved & ~mask()) | position;
      }
    }
    if (slot == nullptr) {
      return false;
    }
    *slot = slots()[last];
    block_->size = last;
    return true;
  }

  void reserve(std::uint32_t capacity) {
    if (block_ != nullptr && block_->capacity >= capacity) {
      return;
    }
    const std::size_t bytes = sizeof(Block) + indexBytes(capacity) + capacity * sizeof(Slot);
    auto* const grown = static_cast<Block*>(std::malloc(bytes));
    Block* const old = block_;
    const Slot* const from = begin();
    grown->size = size();
    grown->capacity = capacity;
    block_ = grown;
    if (from != nullptr) {
      std::memcpy(static_cast<void*>(slots()), from, grown->size * sizeof(Slot));
    }
    if (capacity > kUnindexed) {
      std::memset(words(), 0xFF, indexBytes(capacity));
      for (std::uint32_t at = 0; at != grown->size; ++at) {
        enter(at);
      }
    }
    std::free(old);
  }

 private:
  struct Block {
    std::uint32_t size;
    std::uint32_t capacity;
  };
  static constexpr std::uint32_t kUnindexed = 8, kNone = ~0U;

  static std::size_t indexBytes(std::uint32_t capacity) {
    return capacity <= kUnindexed ? 0 : 2 * std::bit_ceil(capacity) * sizeof(std::uint32_t);
  }
  std::uint32_t mask() const { return 2 * std::bit_ceil(block_->capacity) - 1; }
  std::uint32_t* words() const { return reinterpret_cast<std::uint32_t*>(block_ + 1); }
  Slot* slots() const {
    return reinterpret_cast<Slot*>(reinterpret_cast<std::byte*>(words()) +
                                   indexBytes(block_->capacity));
  }

  /// The first word where this hash may be: the highest bits, so that a word tells its home.
  std::uint32_t home(std::uint32_t hash) const {
    return hash >> static_cast<unsigned>(std::countl_zero(mask()));
  }
  /// The word of the key, or the free one where it would be.
  template <class Key>
  std::uint32_t* wordOf(std::uint32_t hash, const Key& key) const {
    const std::uint32_t low = mask();
    for (std::uint32_t at = home(hash);; at = (at + 1) & low) {
      std::uint32_t* const word = words() + at;
      if (*word == kNone ||
          (((*word ^ hash) & ~low) == 0 && KeyOf{}(slots()[*word & low]) == key)) {
        return word;
      }
    }
  }
  std::uint32_t* wordOfPosition(std::uint32_t hash, std::uint32_t position) const {
    std::uint32_t at = home(hash);
    while ((words()[at] & mask()) != position || words()[at] == kNone) {
      at = (at + 1) & mask();
    }
    return words() + at;
  }
  void enter(std::uint32_t position) const {
    const std::uint32_t low = mask(), hash = KeyOf{}(slots()[position]).hash();
    std::uint32_t at = home(hash);
    while (words()[at] != kNone) {
      at = (at + 1) & low;
    }
    words()[at] = (hash & ~low) | position;
  }
  /// Frees a word, and moves up those behind it that would not be found any more.
  void close(std::uint32_t* word) const {
    const std::uint32_t low = mask();
    const bool tellsHome = low < 0x10000;
    auto hole = static_cast<std::uint32_t>(word - words());
    for (std::uint32_t at = (hole + 1) & low; words()[at] != kNone; at = (at + 1) & low) {
      const std::uint32_t begin =
          home(tellsHome ? words()[at] : KeyOf{}(slots()[words()[at] & low]).hash());
      if (((at - begin) & low) >= ((at - hole) & low)) {
        words()[hole] = words()[at];
        hole = at;
      }
    }
    words()[hole] = kNone;
  }

  Block* block_ = nullptr;
};

}  // namespace Bench
