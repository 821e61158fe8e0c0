#pragma once

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

#include "Kel/BlockMemory.h"
#include "framework/Kel/FailingMemory.h"

/// While an object of this class lives, no collection gets a small block that was there before: the
/// first one of each size needs new memory, so that it can be made to fail.
class NoSpareBlocks {
 public:
  NoSpareBlocks() {
    taken_.reserve(100'000);
    for (std::size_t size = 16; size <= 512; size += 16) {
      takeAll(size);
    }
  }
  NoSpareBlocks(const NoSpareBlocks&) = delete;
  NoSpareBlocks& operator=(const NoSpareBlocks&) = delete;
  ~NoSpareBlocks() {
    for (const auto& [block, size] : taken_) {
      Kel::BlockMemory::deallocate(block, size);
    }
  }

 private:
  void takeAll(std::size_t size) {
    const FailingMemory none(1);
    try {
      for (;;) {
        taken_.emplace_back(Kel::BlockMemory::allocate(size), size);
      }
    } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch)
    }
  }

  std::vector<std::pair<void*, std::size_t>> taken_;
};
