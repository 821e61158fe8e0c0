#include "model/reference/Starve.h"

#include <sys/wait.h>
#include <unistd.h>

#include <exception>
#include <new>

#include "framework/Kel/FailingMemory.h"
#include "framework/Kel/NoSpareBlocks.h"
#include "model/reference/LibrarySide.h"
#include "model/reference/Scratch.h"

namespace Reference {
namespace {

// What a process that lacked memory says about that.
enum Verdict : int { kCoped = 40, kEnded, kNothingFailed, kWrong };

[[noreturn]] void atTheEnd() {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    ::_exit(kEnded);
  } catch (...) {
    ::_exit(kWrong);
  }
}

Text livesOn() {
  Text all;
  Kel::Slab::forEach(
      [](void* to, const Kel::Slab& slab) {
        if (slab.live() != 0) {
          *static_cast<Text*>(to) += std::to_string(slab.live()) + " " + slab.typeName() + " ";
        }
      },
      &all);
  return all.empty() ? all : all + "live on";
}

void restart(LibrarySide& world) {
  world.close();
  for (const From root : {From::policyRoot, From::serviceRoot}) {
    Operation start;
    start.verb = Operation::Verb::start;
    start.at.from = root;
    world.apply(start);
  }
}

Verdict starved(LibrarySide& world, const Operation& operation, std::size_t nth,
                FailingMemory::Then then, bool calm) {
  std::set_terminate(atTheEnd);
  {
    const FailingMemory memory(nth, then);
    try {
      world.apply(operation);
    } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): as it may be
    }
  }
  if (!FailingMemory::failed()) {
    return kNothingFailed;
  }
  std::set_terminate(nullptr);
  restart(world);
  Text different = calm ? differenceFromFresh(world) : "";
  world.close();
  world.tops = {};
  different = different.empty() ? livesOn() : different;
  if (!different.empty()) {
    std::fprintf(stderr, "%s\n", different.c_str());
  }
  return different.empty() ? kCoped : kWrong;
}

int inAProcessOfItsOwn(const auto& act) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::_exit(act());
  }
  int status = 0;
  return ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : kWrong;
}

}  // namespace

StarveOutcome starve(const std::vector<Operation>& operations, bool calm) {
  StarveOutcome outcome;
  LibrarySide world(Seen{});
  for (const Operation& operation : operations) {
    world.time = static_cast<double>(++outcome.operations);
    {
      const NoSpareBlocks spare;
      for (const auto then : {FailingMemory::Then::recovers, FailingMemory::Then::staysAway}) {
        for (std::size_t nth = 1;; ++nth) {
          const int verdict =
              inAProcessOfItsOwn([&] { return starved(world, operation, nth, then, calm); });
          if (verdict == kNothingFailed) {
            break;
          }
          if (verdict != kCoped && verdict != kEnded) {
            outcome.difference =
                "with allocation " + std::to_string(nth) +
                (then == FailingMemory::Then::recovers ? "" : " and all behind it") +
                " failing: the process has ended with " + std::to_string(verdict);
            return outcome;
          }
          ++outcome.failures;
          outcome.endings += verdict == kEnded ? 1 : 0;
        }
      }
    }
    world.log.clear();
    world.apply(operation);
  }
  return outcome;
}

}  // namespace Reference
