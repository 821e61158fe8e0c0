#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Lumo/DefaultHandle.h"
#include "TraceTools.h"

namespace {

using LumoTest::memoryRing;

TEST(DefaultHandle, ThereIsNoneUntilOneIsSet) {
  EXPECT_EQ(Lumo::defaultHandle(), nullptr);
  const auto ring = memoryRing();
  EXPECT_EQ(Lumo::defaultHandleIs(ring.get()), nullptr);
  EXPECT_EQ(Lumo::defaultHandle(), ring.get());
  EXPECT_EQ(Lumo::defaultHandleIs(nullptr), ring.get());
}

TEST(DefaultHandle, ARingThatIsDestroyedStopsBeingTheDefault) {
  auto first = memoryRing();
  auto second = memoryRing();
  Lumo::defaultHandleIs(first.get());
  second.reset();
  EXPECT_EQ(Lumo::defaultHandle(), first.get());
  first.reset();
  EXPECT_EQ(Lumo::defaultHandle(), nullptr);
}

TEST(DefaultHandle, AChildMadeByForkHasNoDefaultHandle) {
  const auto ring = memoryRing();
  Lumo::defaultHandleIs(ring.get());
  const pid_t child = fork();
  if (child == 0) {
    _exit(Lumo::defaultHandle() == nullptr ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Lumo::defaultHandle(), ring.get()) << "in the parent nothing changed";
}

int changes = 0;

TEST(DefaultHandle, EveryChangeIsReportedAfterItWasMade) {
  auto ring = memoryRing();
  const auto before = Lumo::defaultHandleObserverIs([] { ++changes; });
  Lumo::defaultHandleIs(ring.get());
  EXPECT_EQ(changes, 1);
  ring.reset();
  EXPECT_EQ(changes, 2);
  Lumo::defaultHandleObserverIs(before);
}

TEST(DefaultHandle, ChangesAlsoWhenNobodyIsToldOfIt) {
  const auto ring = memoryRing();
  const auto before = Lumo::defaultHandleObserverIs(nullptr);
  EXPECT_EQ(Lumo::defaultHandleIs(ring.get()), nullptr);
  EXPECT_EQ(Lumo::defaultHandleIs(nullptr), ring.get());
  Lumo::defaultHandleObserverIs(before);
}

}  // namespace
