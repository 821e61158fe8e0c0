#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "Kel/Walk.h"

namespace [[using gnu: visibility("default")]] Kel {

/// A walk over a Table. The slots before its first boundary have had their turn, those from its
/// second on were inserted after it began. Whatever moves slots moves the boundaries with them.
class TableWalk : public Walk {
 public:
  /// The table is empty now.
  static void clear(const Anchor& table) noexcept {
    forEach(table, [](TableWalk& walk) { walk.at_ = walk.end_ = 0; });
  }
  /// The table has its slots elsewhere now, at the same positions.
  static void moved(const Anchor& table, const void* slots) noexcept {
    forEach(table,
            [slots](TableWalk& walk) { walk.slots_ = static_cast<const std::byte*>(slots); });
  }

  /// Makes every walk right again after the deletion of the slot at `hole`: each boundary above it
  /// comes down by one, and the slot that it thereby passes is moved into the hole by `move(from,
  /// to)`. Returns where the hole is in the end: above every boundary, or at the last slot.
  template <class Move>
  static std::uint32_t closeUp(const Anchor& table, std::uint32_t hole, Move move) noexcept {
    auto* const latest = static_cast<TableWalk*>(table.walks());
    if (latest->next() != nullptr) {
      return closeUpAll(table, hole, move);
    }
    for (std::uint32_t* const boundary : {&latest->at_, &latest->end_}) {
      if (*boundary > hole) {
        move(--*boundary, hole);
        hole = *boundary;
      }
    }
    return hole;
  }

 protected:
  TableWalk() noexcept = default;
  TableWalk(const Anchor& table, const void* slots, std::uint32_t size) noexcept
      : Walk(table), slots_(static_cast<const std::byte*>(slots)), end_(size) {}

  /// The slot whose turn is next, of `size` bytes; null, and the walk is done, when there is none.
  const std::byte* step(std::size_t size) noexcept {
    if (at_ == end_) {
      leave();
      return nullptr;
    }
    return slots_ + at_++ * size;
  }

 private:
  // The same for several walks, whose boundaries are taken in ascending order.
  template <class Move>
  [[gnu::noinline]] static std::uint32_t closeUpAll(const Anchor& table, std::uint32_t hole,
                                                    Move move) noexcept {
    constexpr auto kNone = std::numeric_limits<std::uint32_t>::max();
    for (;;) {
      std::uint32_t lowest = kNone;
      forEach(table, [&lowest, hole](const TableWalk& walk) {
        lowest = walk.at_ > hole ? std::min(lowest, walk.at_) : lowest;
        lowest = walk.end_ > hole ? std::min(lowest, walk.end_) : lowest;
      });
      if (lowest == kNone) {
        return hole;
      }
      forEach(table, [lowest](TableWalk& walk) {
        walk.at_ -= walk.at_ == lowest ? 1U : 0U;
        walk.end_ -= walk.end_ == lowest ? 1U : 0U;
      });
      move(lowest - 1, hole);
      hole = lowest - 1;
    }
  }

  template <class Visit>
  static void forEach(const Anchor& table, Visit visit) noexcept {
    for (Walk* walk = table.walks(); walk != nullptr; walk = walk->next()) {
      visit(*static_cast<TableWalk*>(walk));
    }
  }

  const std::byte* slots_ = nullptr;
  std::uint32_t at_ = 0;
  std::uint32_t end_ = 0;
};

}  // namespace Kel
