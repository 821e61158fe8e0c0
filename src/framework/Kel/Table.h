#pragma once

#include <cstddef>
#include <cstdint>

#include "Kel/TableBlock.h"
#include "Kel/TableWalk.h"

namespace [[using gnu: visibility("default")]] Kel {

/// What Set and EntryMap have in common: hashed slots, in the order of their insertion until one is
/// taken away, in one block of memory, and the walks over them (Walk.h).
///
/// `Hash` is a function object that returns the hash of a slot. Where a hash is asked for beside a
/// slot, it matters only if indexed().
template <class Slot, class Hash>
class Table {
 public:
  using Block = TableBlock<Slot, Hash>;

  Table() noexcept = default;
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;
  ~Table() { Block::free(detach()); }

  const Anchor& anchor() const noexcept { return anchor_; }
  /// Null when the table owns no memory.
  Block* block() const noexcept { return static_cast<Block*>(anchor_.storage()); }
  std::uint32_t size() const noexcept { return block() == nullptr ? 0 : block()->size(); }
  std::size_t heapBytes() const noexcept { return block() == nullptr ? 0 : block()->bytes(); }
  /// Whether look-ups need the hash of the key.
  bool indexed() const noexcept { return block() != nullptr && block()->indexed(); }

  /// Fetches what is in the first lines of the block, of those 64 bytes long, into the caches.
  void prefetch() const noexcept {
    if (const auto* const memory = reinterpret_cast<const std::byte*>(block())) {
      for (const std::size_t at : {0U, 64U, 128U, 192U}) {
        __builtin_prefetch(memory + at);
      }
    }
  }

  /// The slot for which `same` holds; null when there is none.
  template <class Same>
  const Slot* find(std::uint32_t hash, Same same) const noexcept {
    const Block* const all = block();
    return all == nullptr ? nullptr : all->find(hash, same);
  }

  /// Adds a slot that is not there yet. Raises std::bad_alloc and changes nothing when there is no
  /// memory.
  void append(Slot slot, std::uint32_t hash) {
    Block* all = block();
    if (all == nullptr || all->size() == all->capacity()) [[unlikely]] {
      const bool hashed = indexed();
      relocate(Block::capacityAbove(all == nullptr ? 0 : all->capacity()));
      all = block();
      if (!hashed && all->indexed()) {
        hash = Hash{}(slot);
      }
    }
    all->append(slot, hash);
  }

  /// Takes the slot away for which `same` holds, and copies it to `taken`; false when there is
  /// none.
  template <class Same>
  bool take(std::uint32_t hash, Same same, Slot& taken) noexcept {
    Block* const all = block();
    const Slot* const slot = all == nullptr ? nullptr : all->strike(hash, same);
    if (slot == nullptr) {
      return false;
    }
    taken = *slot;
    auto hole = static_cast<std::uint32_t>(slot - all->slots());
    if (anchor_.walks() != nullptr) [[unlikely]] {
      hole = TableWalk::closeUp(
          anchor_, hole, [all](std::uint32_t from, std::uint32_t to) { all->move(from, to); });
    }
    all->move(all->size() - 1, hole);
    all->dropLast();
    if (all->size() == 0) {
      anchor_.storageIs(nullptr);
      Block::free(all);
    }
    return true;
  }

  /// Makes room for `size` slots, not more.
  void reserve(std::size_t size) {
    if (size > (block() == nullptr ? 0 : block()->capacity())) {
      relocate(size);
    }
  }

  /// Takes over the slots of `from`; there are none yet. Raises std::bad_alloc and changes nothing
  /// when there is no memory.
  void fill(const Table& from) {
    if (from.size() != 0) {
      reserve(from.size());
      block()->fill(*from.block());
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
  void relocate(std::size_t capacity) {
    Block* const old = block();
    Block* const all = Block::copy(old, capacity);
    anchor_.storageIs(all);
    TableWalk::moved(anchor_, all->slots());
    Block::free(old);
  }

  Anchor anchor_;
};

}  // namespace Kel
