#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Brix/Publisher.h"
#include "framework/Brix/Publishing.h"

namespace Brix {
namespace {

/// What rounds have to do, in the plainest way: each registration has a number of its own, and a
/// round remembers those that were there when it began.
class Model {
 public:
  struct Failure : std::runtime_error {
    explicit Failure(int number) : std::runtime_error("failure"), which(number) {}
    int which;
  };

  Model(std::uint32_t seed, int slots, int steps) : random_(seed), stepsLeft_(steps) {
    for (int i = 0; i != slots; ++i) {
      slots_.push_back(std::make_unique<Slot>([this, i] { called(i); }));
    }
  }

  void run() {
    while (stepsLeft_-- > 0) {
      act(0);
    }
    ASSERT_TRUE(rounds_.empty());
    ASSERT_EQ(object_->publisher().subscriberCount(), registered_.size());
  }

 private:
  struct Registration {
    int slot;
    int number;
    bool operator==(const Registration&) const = default;
  };
  struct Round {
    std::vector<Registration> due;
    std::size_t at = 0;
    int failure = 0;  // the first; 0: none
  };

  bool present(const Registration& one) const {
    return std::find(registered_.begin(), registered_.end(), one) != registered_.end();
  }

  void called(int slot) {
    ASSERT_FALSE(rounds_.empty());
    {
      Round& round = rounds_.back();
      while (round.at != round.due.size() && !present(round.due[round.at])) {
        ++round.at;
      }
      ASSERT_NE(round.at, round.due.size()) << "slot " << slot << " is called and was not due";
      ASSERT_EQ(round.due[round.at].slot, slot);
      ++round.at;
    }
    const std::size_t depth = rounds_.size();
    try {
      for (int actions = pick(4); actions != 0; --actions) {
        act(static_cast<int>(depth));
      }
      if (pick(8) == 0) {
        throw Failure(++failures_);
      }
    } catch (const Failure& failure) {
      if (rounds_.back().failure == 0) {
        rounds_.back().failure = failure.which;
      }
      throw;
    }
  }

  void act(int depth) {
    const int slot = pick(static_cast<int>(slots_.size()));
    const auto publisher = object_->publisher();
    const auto at = std::find_if(registered_.begin(), registered_.end(),
                                 [slot](const Registration& one) { return one.slot == slot; });
    switch (pick(depth < 4 && stepsLeft_-- > 0 ? 5 : 4)) {
      case 0:
      case 1:
        publisher.subscriberAdd(*slots_[static_cast<std::size_t>(slot)]);
        if (at == registered_.end()) {
          registered_.push_back({slot, ++numbers_});
        }
        break;
      case 2:
      case 3:
        publisher.subscriberRemove(*slots_[static_cast<std::size_t>(slot)]);
        if (at != registered_.end()) {
          registered_.erase(at);
        }
        break;
      default:
        round(depth);
    }
    ASSERT_EQ(publisher.subscriberCount(), registered_.size());
  }

  void round(int depth) {
    rounds_.push_back({registered_, 0, 0});
    int raised = 0;
    try {
      object_->publisher().publish(1);
    } catch (const Failure& failure) {
      raised = failure.which;
    }
    const Round done = std::move(rounds_.back());
    rounds_.pop_back();
    ASSERT_EQ(raised, done.failure);
    for (std::size_t i = done.at; i != done.due.size(); ++i) {
      ASSERT_FALSE(present(done.due[i])) << "a round left out slot " << done.due[i].slot;
    }
    if (raised != 0 && depth != 0 && pick(2) == 0) {
      throw Failure(raised);  // not every observer catches what its own change has raised
    }
  }

  int pick(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }

  std::mt19937 random_;
  Ptr<Publishing> object_ = Publishing::make();
  std::vector<std::unique_ptr<Slot>> slots_;
  std::vector<Registration> registered_;
  std::vector<Round> rounds_;
  int numbers_ = 0;
  int failures_ = 0;
  int stepsLeft_;
};

TEST(PublisherModel, RandomRoundsOfSubscribersThatComeAndGoAndNestAndFailBehaveAsTheModel) {
  const auto first = static_cast<std::uint32_t>(std::random_device{}());
  for (std::uint32_t seed = first; seed != first + 200; ++seed) {
    for (const int slots : {1, 2, 3, 8}) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", slots " + std::to_string(slots));
      Model(seed, slots, 300).run();
      if (::testing::Test::HasFatalFailure()) {
        return;
      }
    }
  }
}

}  // namespace
}  // namespace Brix
