#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Brix/Counted.h"
#include "Brix/Ptr.h"
#include "Kel/Slab.h"
#include "framework/Kel/FailingMemory.h"

namespace Kel {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kPaged = false;  // every block comes from the sanitizer's own memory
#elif defined(__has_feature)
constexpr bool kPaged = !__has_feature(address_sanitizer);
#else
constexpr bool kPaged = true;
#endif

constexpr std::size_t kPage = 32768 - 64;

struct Fragile : Brix::Counted, SlabAllocated<Fragile> {
  explicit Fragile(bool broken = false) {
    if (broken) {
      throw std::runtime_error("broken");
    }
  }
  static constexpr const char* kelTypeName() { return "Test::Fragile"; }
  std::uint64_t payload[3] = {};
};

struct Bigger : Fragile {
  std::uint64_t more[10] = {};
};

struct alignas(64) Aligned : SlabAllocated<Aligned> {
  static constexpr const char* kelTypeName() { return "Test::Aligned"; }
  char byte = 0;
};

Slab& fragiles() { return slabOf<Fragile>(); }

/// Switches the locking on while it lives.
struct ThreadSafe {
  ThreadSafe() { Brix::threadSafePointers = true; }
  ~ThreadSafe() { Brix::threadSafePointers = false; }
};

TEST(Slab, CountsTheLivingAndRemembersTheMost) {
  Slab slab("Test::Counted", 40, 8);
  EXPECT_EQ(slab.live(), 0U);
  EXPECT_EQ(slab.peak(), 0U);
  EXPECT_EQ(slab.bytes(), 0U);
  void* const a = slab.allocate();
  void* const b = slab.allocate();
  EXPECT_EQ(slab.live(), 2U);
  slab.deallocate(a);
  EXPECT_EQ(slab.live(), 1U);
  EXPECT_EQ(slab.peak(), 2U);
  slab.deallocate(b);
  slab.deallocate(nullptr);
  EXPECT_EQ(slab.live(), 0U);
  EXPECT_EQ(slab.peak(), 2U);
  EXPECT_EQ(slab.objectSize(), 40U);
  EXPECT_STREQ(slab.typeName(), "Test::Counted");
}

TEST(Slab, ServesTheObjectsOfItsType) {
  const std::size_t before = fragiles().live();
  {
    const Brix::Ptr<Fragile> object(new Fragile, Brix::adopt);
    EXPECT_EQ(fragiles().live(), before + 1);
  }
  EXPECT_EQ(fragiles().live(), before);
  EXPECT_EQ(fragiles().objectSize(), sizeof(Fragile));
}

TEST(Slab, GetsBlockAndCountBackWhenAConstructorRaises) {
  const std::size_t before = fragiles().live();
  for (int i = 0; i != 100'000; ++i) {
    EXPECT_THROW(new Fragile(true), std::runtime_error);
  }
  EXPECT_EQ(fragiles().live(), before);
  EXPECT_LE(fragiles().bytes(), kPage);
}

TEST(Slab, LeavesLargerDerivedTypesToTheSystem) {
  const std::size_t before = fragiles().live();
  const Brix::Ptr<Fragile> object(new Bigger, Brix::adopt);
  EXPECT_EQ(fragiles().live(), before);
}

TEST(Slab, KeepsTheAlignmentOfItsType) {
  std::vector<Aligned*> objects;
  for (int i = 0; i != 1000; ++i) {
    objects.push_back(new Aligned);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(objects.back()) % 64, 0U);
  }
  for (const Aligned* object : objects) {
    delete object;
  }
  EXPECT_EQ(slabOf<Aligned>().live(), 0U);
}

TEST(Slab, HandsOutBlocksThatDoNotOverlapAtAnySize) {
  for (const std::size_t size : {1U, 8U, 24U, 100U, 1000U, 4000U, 5000U, 100'000U}) {
    Slab slab("Test::Sized", size, size % 8 == 0 ? 8 : 1);
    std::mt19937 random(static_cast<unsigned>(size));
    std::vector<unsigned char*> blocks;
    const std::size_t count = 400'000 / size + 3;
    for (std::size_t step = 0; step != 3 * count; ++step) {
      if (blocks.size() < count && random() % 3 != 0) {
        auto* const block = static_cast<unsigned char*>(slab.allocate());
        std::memset(block, static_cast<int>(blocks.size() % 251), size);
        blocks.push_back(block);
      } else if (!blocks.empty()) {
        const unsigned char mark = static_cast<unsigned char>((blocks.size() - 1) % 251);
        ASSERT_EQ(std::count(blocks.back(), blocks.back() + size, mark),
                  static_cast<std::ptrdiff_t>(size));
        slab.deallocate(blocks.back());
        blocks.pop_back();
      }
      ASSERT_EQ(slab.live(), blocks.size());
    }
    for (unsigned char* block : blocks) {
      slab.deallocate(block);
    }
    EXPECT_EQ(slab.live(), 0U);
    EXPECT_LE(slab.bytes(), kPage);
  }
}

TEST(Slab, ReturnsEmptyPagesButForOneInWhateverOrderTheBlocksComeBack) {
  for (const unsigned seed : {1U, 2U, 3U}) {
    Slab slab("Test::Returned", 64, 8);
    std::vector<void*> blocks;
    for (int i = 0; i != 100'000; ++i) {
      blocks.push_back(slab.allocate());
    }
    EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), blocks.size());
    EXPECT_GE(slab.bytes(), 100'000U * 64);
    EXPECT_LE(slab.bytes(), 100'000U * 65 + kPage);
    std::shuffle(blocks.begin(), blocks.end(), std::mt19937(seed));
    for (void* block : blocks) {
      slab.deallocate(block);
    }
    EXPECT_EQ(slab.live(), 0U);
    EXPECT_EQ(slab.bytes(), kPaged ? kPage : 0U);
    EXPECT_EQ(slab.peak(), 100'000U);
  }
}

TEST(Slab, HoldsOnToItsLastPageWhenASingleObjectComesAndGoes) {
  Slab slab("Test::Single", 64, 8);
  void* const first = slab.allocate();
  slab.deallocate(first);
  const FailingMemory failing(1);
  for (int i = 0; kPaged && i != 1000; ++i) {
    EXPECT_EQ(slab.allocate(), first);
    slab.deallocate(first);
  }
  EXPECT_FALSE(FailingMemory::failed());
  EXPECT_EQ(slab.live(), 0U);
}

TEST(Slab, ReusesTheBlocksOfHalfFullPages) {
  Slab slab("Test::Reused", 64, 8);
  std::vector<void*> blocks;
  for (int i = 0; i != 50'000; ++i) {
    blocks.push_back(slab.allocate());
  }
  std::shuffle(blocks.begin(), blocks.end(), std::mt19937(5));
  const std::size_t bytes = slab.bytes();
  for (int round = 0; round != 3; ++round) {
    for (std::size_t i = 0; i != 25'000; ++i) {
      slab.deallocate(blocks[i]);
    }
    for (std::size_t i = 0; i != 25'000; ++i) {
      blocks[i] = slab.allocate();
    }
    EXPECT_EQ(slab.bytes(), bytes);  // also under the address sanitizer, which has no pages
  }
  EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), blocks.size());
  for (void* block : blocks) {
    slab.deallocate(block);
  }
}

TEST(Slab, ChangesNothingWhenThereIsNoMemory) {
  Slab slab("Test::Failing", 64, 8);
  {
    const FailingMemory failing(1);
    EXPECT_THROW(slab.allocate(), std::bad_alloc);
  }
  EXPECT_EQ(slab.live(), 0U);
  EXPECT_EQ(slab.peak(), 0U);
  EXPECT_EQ(slab.bytes(), 0U);
  slab.deallocate(slab.allocate());
  EXPECT_EQ(slab.peak(), 1U);
}

TEST(Slab, ListsAllSlabsByName) {
  const Slab second("Test::Zebra", 8, 8);
  const Slab first("Test::Ant", 8, 8);
  std::vector<std::string> names;
  Slab::forEach(
      [](void* context, const Slab& slab) {
        static_cast<std::vector<std::string>*>(context)->emplace_back(slab.typeName());
      },
      &names);
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  EXPECT_EQ(std::count(names.begin(), names.end(), "Test::Ant"), 1);
  EXPECT_EQ(std::count(names.begin(), names.end(), "Test::Zebra"), 1);
}

TEST(Slab, TakesBackOnOneThreadWhatAnotherTookOut) {
  Slab slab("Test::Threaded", 64, 8);
  {
    const ThreadSafe on;
    std::vector<void*> blocks;
    for (int i = 0; i != 20'000; ++i) {
      blocks.push_back(slab.allocate());
    }
    std::thread other([&slab, &blocks] {
      for (void* block : blocks) {
        slab.deallocate(block);
      }
    });
    std::vector<void*> own;
    for (int i = 0; i != 20'000; ++i) {
      own.push_back(slab.allocate());
      if (i % 3 == 0) {
        slab.deallocate(own.back());
        own.pop_back();
      }
      EXPECT_LE(slab.live(), slab.peak());
    }
    other.join();
    EXPECT_EQ(slab.live(), own.size());
    EXPECT_EQ(std::set<void*>(own.begin(), own.end()).size(), own.size());
    for (void* block : own) {
      slab.deallocate(block);
    }
  }
  EXPECT_EQ(slab.live(), 0U);
  EXPECT_LE(slab.bytes(), kPage);
}

}  // namespace
}  // namespace Kel
