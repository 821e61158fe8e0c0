#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Kel/Observer.h"
#include "framework/Kel/Model.h"

namespace Kel {
namespace {

using Model::Whole;

TEST(Observer, IsCalledWithAttributeAndKeyWhileItLives) {
  const auto whole = Whole::WholeIs();
  std::vector<std::uint32_t> keys;
  {
    const Observer observer(*whole, [&](AttrId id, const void* key) {
      EXPECT_EQ(id, Whole::numberAttr.id);
      keys.push_back(*static_cast<const std::uint32_t*>(key));
    });
    whole->numberIs(1);
    whole->numberIs(2);
  }
  whole->numberIs(3);
  EXPECT_EQ(keys, (std::vector<std::uint32_t>{1, 2}));
  EXPECT_EQ(whole->publisher().subscriberCount(), 0U);
}

TEST(Observer, KeepsItsObjectAlive) {
  auto whole = Whole::WholeIs();
  Whole& entity = *whole;
  int calls = 0;
  const Observer observer(entity, [&](AttrId, const void*) { ++calls; });
  whole.reset();
  entity.countIs(1);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(entity.refCount(), 1U);
}

TEST(Observer, MayBeDestroyedByItsOwnFunction) {
  for (const bool crowded : {false, true}) {
    const auto whole = Whole::WholeIs();
    int others = 0;
    std::unique_ptr<Observer> first;
    std::unique_ptr<Observer> second;
    const std::string large(100, 'x');
    first = std::make_unique<Observer>(*whole, [&, large](AttrId, const void*) {
      first.reset();
      EXPECT_EQ(large.size(), 100U);
    });
    if (crowded) {
      second = std::make_unique<Observer>(*whole, [&](AttrId, const void*) { ++others; });
    }
    whole->countIs(1);
    whole->countIs(2);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(others, crowded ? 2 : 0);
  }
}

TEST(Observer, MayDropTheLastPointerToItsObject) {
  auto whole = Whole::WholeIs();
  std::unique_ptr<Observer> observer;
  observer = std::make_unique<Observer>(*whole, [&](AttrId, const void*) {
    whole.reset();
    observer.reset();
  });
  whole->countIs(1);
  EXPECT_EQ(whole, nullptr);
}

TEST(Observer, LetsItsExceptionOutToTheWriter) {
  const auto whole = Whole::WholeIs();
  const Observer observer(*whole, [](AttrId, const void*) { throw std::runtime_error("no"); });
  EXPECT_THROW(whole->countIs(1), std::runtime_error);
  EXPECT_EQ(whole->count(), 1U);
}

TEST(Observer, MayChangeTheObjectAndIsCalledForThatAsWell) {
  const auto whole = Whole::WholeIs();
  std::vector<std::uint32_t> seen;
  const Observer observer(*whole, [&](AttrId, const void*) {
    seen.push_back(whole->count());
    if (whole->count() < 3) {
      whole->countIs(whole->count() + 1);
    }
  });
  whole->countIs(1);
  EXPECT_EQ(seen, (std::vector<std::uint32_t>{1, 2, 3}));
}

}  // namespace
}  // namespace Kel
