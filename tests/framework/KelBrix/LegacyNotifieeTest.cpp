#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Kel/Attributes.h"
#include "KelBrix/LegacyNotifiee.h"

namespace LegacyNotifieeTests {

using Kel::AttrId;
using KelBrix::iteratorLegacyNotifiee;
using KelBrix::visitLegacyNotifiee;
using Lines = std::vector<std::string>;

/// An object that is watched the old way: it publishes a number and a flag.
class Watched final : public Kel::PtrInterface {
  using Self = Watched;

 public:
  static constexpr const char* kelTypeName() { return "Watched"; }
  static constexpr std::array<AttrId, 2> kelPublished{130, 132};

  KEL_CONST(130, number, std::uint32_t)
  KEL_CONST(131, secret, bool)
  KEL_CONST(132, flag, bool)

  Watched() : number_(7), secret_(true), flag_(true) { ++alive; }
  ~Watched() override { --alive; }
  Kel::FwkType fwkType() const noexcept override;
  Brix::Publisher notifieeList() const noexcept override { return {*this, notifiees_}; }

  static inline int alive = 0;

 private:
  mutable Brix::SubscriberList notifiees_;
};

/// An object without a list.
class Unwatched final : public Kel::PtrInterface {
 public:
  Kel::FwkType fwkType() const noexcept override { return {}; }
};

Kel::FwkType Watched::fwkType() const noexcept {
  static constexpr std::array<Kel::Module::TypeFunction, 1> kTypes{&Kel::describe<Watched>};
  static constexpr Kel::Module kModule{"test", kTypes};
  return {&kModule, 0};
}

template <class T>
Brix::Ptr<T> make() {
  return Brix::Ptr<T>(new T, Brix::adopt);
}

class Notifiee : public KelBrix::LegacyNotifiee {
 public:
  explicit Notifiee(Lines& told, std::string name = "") : told_(told), name_(std::move(name)) {}
  void notify(AttrId id, const void* value) override {
    told_.push_back(name_ + std::to_string(id) + (value == nullptr ? " null" : ""));
    if (value != nullptr) {
      value_ = value;
    }
    if (then) {
      then();
    }
  }
  const void* value() const { return value_; }
  std::function<void()> then;

 private:
  Lines& told_;
  std::string name_;
  const void* value_ = nullptr;
};

class LegacyNotifieeGlue : public testing::Test {
 protected:
  Lines take() { return std::exchange(told, {}); }
  Lines told;
  Brix::Ptr<Watched> object = make<Watched>();
  Notifiee a{told, "a"};
  Notifiee b{told, "b"};
};

TEST_F(LegacyNotifieeGlue, TellsTheAttributeAndItsValue) {
  addLegacyNotifiee(*object, a, false);
  EXPECT_EQ(take(), Lines{});
  visitLegacyNotifiee(*object, 130, &object->number());
  EXPECT_EQ(take(), Lines{"a130"});
  EXPECT_EQ(a.value(), &object->number());
  visitLegacyNotifiee(*object, 132, nullptr);
  EXPECT_EQ(take(), Lines{"a132 null"});
}

TEST_F(LegacyNotifieeGlue, AddingTwiceIsOneEntry) {
  addLegacyNotifiee(*object, a, false);
  addLegacyNotifiee(*object, a, false);
  visitLegacyNotifiee(*object, 130, nullptr);
  EXPECT_EQ(take(), Lines{"a130 null"});
  removeLegacyNotifiee(*object, a);
  visitLegacyNotifiee(*object, 130, nullptr);
  EXPECT_EQ(take(), Lines{});
}

TEST_F(LegacyNotifieeGlue, RemovingAStrangerDoesNothing) {
  removeLegacyNotifiee(*object, b);
  addLegacyNotifiee(*object, a, false);
  removeLegacyNotifiee(*object, b);
  visitLegacyNotifiee(*object, 130, nullptr);
  EXPECT_EQ(take(), Lines{"a130 null"});
}

TEST_F(LegacyNotifieeGlue, AnImmediateVisitTellsWhatIsPublishedAndNothingElse) {
  addLegacyNotifiee(*object, a, false);
  addLegacyNotifiee(*object, b, true);
  EXPECT_EQ(take(), (Lines{"b130", "b132"}));
  EXPECT_EQ(b.value(), &object->flag());
}

TEST_F(LegacyNotifieeGlue, TellsAllInTheOrderOfTheirRegistration) {
  addLegacyNotifiee(*object, b, false);
  addLegacyNotifiee(*object, a, false);
  visitLegacyNotifiee(*object, 130, nullptr);
  EXPECT_EQ(take(), (Lines{"b130 null", "a130 null"}));
}

TEST_F(LegacyNotifieeGlue, ANotifieeMayRemoveItselfAndOthersDuringAVisit) {
  Notifiee c{told, "c"};
  addLegacyNotifiee(*object, a, false);
  addLegacyNotifiee(*object, b, false);
  addLegacyNotifiee(*object, c, false);
  a.then = [&] {
    removeLegacyNotifiee(*object, a);
    removeLegacyNotifiee(*object, b);
  };
  visitLegacyNotifiee(*object, 130, nullptr);
  EXPECT_EQ(take(), (Lines{"a130 null", "c130 null"}));
  visitLegacyNotifiee(*object, 130, nullptr);
  EXPECT_EQ(take(), Lines{"c130 null"});
}

TEST_F(LegacyNotifieeGlue, ANotifieeThatIsAddedDuringAVisitWaitsForTheNextOne) {
  addLegacyNotifiee(*object, a, false);
  a.then = [&] { addLegacyNotifiee(*object, b, false); };
  visitLegacyNotifiee(*object, 130, nullptr);
  EXPECT_EQ(take(), Lines{"a130 null"});
  a.then = nullptr;
  visitLegacyNotifiee(*object, 130, nullptr);
  EXPECT_EQ(take(), (Lines{"a130 null", "b130 null"}));
}

TEST_F(LegacyNotifieeGlue, WhatANotifieeThrowsGoesOnAfterTheOthersWereTold) {
  addLegacyNotifiee(*object, a, false);
  addLegacyNotifiee(*object, b, false);
  a.then = [] { throw std::runtime_error("refused"); };
  EXPECT_THROW(visitLegacyNotifiee(*object, 130, nullptr), std::runtime_error);
  EXPECT_EQ(take(), (Lines{"a130 null", "b130 null"}));
}

TEST_F(LegacyNotifieeGlue, ThereIsNoIteratorWithoutNotifiees) {
  EXPECT_EQ(iteratorLegacyNotifiee(*object), nullptr);
  addLegacyNotifiee(*object, a, false);
  removeLegacyNotifiee(*object, a);
  EXPECT_EQ(iteratorLegacyNotifiee(*object), nullptr);
}

TEST_F(LegacyNotifieeGlue, AnIteratorWalksTheNotifieesOfItsBeginning) {
  addLegacyNotifiee(*object, a, false);
  addLegacyNotifiee(*object, b, false);
  const auto walk = iteratorLegacyNotifiee(*object);
  ASSERT_NE(walk, nullptr);
  Notifiee late{told, "late"};
  addLegacyNotifiee(*object, late, false);
  EXPECT_EQ(walk->next(), &a);
  EXPECT_EQ(walk->next(), &b);
  EXPECT_EQ(walk->next(), nullptr);
  EXPECT_EQ(walk->next(), nullptr);
}

TEST_F(LegacyNotifieeGlue, AnIteratorPassesOverThoseThatWereRemoved) {
  Notifiee c{told, "c"};
  addLegacyNotifiee(*object, a, false);
  addLegacyNotifiee(*object, b, false);
  addLegacyNotifiee(*object, c, false);
  const auto walk = iteratorLegacyNotifiee(*object);
  EXPECT_EQ(walk->next(), &a);
  removeLegacyNotifiee(*object, a);
  removeLegacyNotifiee(*object, b);
  EXPECT_EQ(walk->next(), &c);
  removeLegacyNotifiee(*object, c);
  EXPECT_EQ(walk->next(), nullptr);
}

/// A subscriber of the new kind.
class Modern : public Brix::Subscriber {
 public:
  Modern() {
    dispatchIs([](const Brix::Publisher&, Subscriber&, AttrId, const void*, const void*) {});
  }
};

TEST_F(LegacyNotifieeGlue, AnIteratorPassesOverSubscribersOfAnotherKind) {
  Modern modern;
  object->notifieeList().subscriberAdd(modern);
  addLegacyNotifiee(*object, a, false);
  const auto walk = iteratorLegacyNotifiee(*object);
  EXPECT_EQ(walk->next(), &a);
  EXPECT_EQ(walk->next(), nullptr);
  object->notifieeList().subscriberRemove(modern);
}

TEST_F(LegacyNotifieeGlue, AnIteratorKeepsTheObjectAndANotifieeDoesNot) {
  addLegacyNotifiee(*object, a, false);
  EXPECT_EQ(object->refCount(), 1U);
  auto walk = iteratorLegacyNotifiee(*object);
  object.reset();
  EXPECT_EQ(Watched::alive, 1);
  EXPECT_EQ(walk->next(), &a);
  walk.reset();
  EXPECT_EQ(Watched::alive, 0);
}

TEST_F(LegacyNotifieeGlue, AnObjectWithoutAListIsNotWatched) {
  const auto plain = make<Unwatched>();
  addLegacyNotifiee(*plain, a, true);
  visitLegacyNotifiee(*plain, 130, nullptr);
  removeLegacyNotifiee(*plain, a);
  EXPECT_EQ(iteratorLegacyNotifiee(*plain), nullptr);
  EXPECT_EQ(take(), Lines{});
}

}  // namespace LegacyNotifieeTests
