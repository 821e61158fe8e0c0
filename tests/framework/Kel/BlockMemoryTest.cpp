#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "Kel/BlockMemory.h"
#include "Kel/Slab.h"

namespace Kel {
namespace {

TEST(BlockMemory, HandsOutBlocksOfEverySizeThatDoNotOverlap) {
  std::vector<std::pair<unsigned char*, std::size_t>> blocks;
  for (int round = 0; round != 3; ++round) {
    for (std::size_t size = 1; size != 1100; ++size) {
      auto* const block = static_cast<unsigned char*>(BlockMemory::allocate(size));
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 8, 0U);
      std::memset(block, static_cast<int>(size % 251), size);
      blocks.emplace_back(block, size);
    }
  }
  for (const auto& [block, size] : blocks) {
    ASSERT_EQ(std::count(block, block + size, static_cast<unsigned char>(size % 251)),
              static_cast<std::ptrdiff_t>(size));
    BlockMemory::deallocate(block, size);
  }
}

TEST(BlockMemory, UsesASmallBlockAgainForThoseOfItsSizeAlone) {
  void* const small = BlockMemory::allocate(40);
  BlockMemory::deallocate(small, 40);
  void* const larger = BlockMemory::allocate(90);
  void* const again = BlockMemory::allocate(41);
  EXPECT_TRUE(again == small || !Slab::kPaged);
  EXPECT_NE(larger, small);
  BlockMemory::deallocate(larger, 90);
  BlockMemory::deallocate(again, 41);
}

TEST(BlockMemory, IsNoTypeAmongTheTypes) {
  BlockMemory::deallocate(BlockMemory::allocate(40), 40);
  Slab::forEach([](void* /*context*/, const Slab& slab) { ASSERT_NE(slab.typeName(), nullptr); },
                nullptr);
}

}  // namespace
}  // namespace Kel
