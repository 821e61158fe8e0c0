// What a session tells those who keep what was applied.

#include "session/Ledger.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "Kel/Observer.h"
#include "change/ChangeReader.h"
#include "session/Session.h"
#include "text/SourceText.h"

namespace Host {
namespace {

class Book : public Ledger {
 public:
  explicit Book(const Trees& trees) : trees_(trees) {}
  std::optional<std::string> enter(const Change& change, Kel::Seconds time) override {
    times.push_back(time);
    devicesBefore.push_back(trees_.policyV1->policySet().size());
    return change.signal ? std::nullopt : std::optional<std::string>("no room");
  }

  std::vector<Kel::Seconds> times;
  std::vector<std::size_t> devicesBefore;

 private:
  const Trees& trees_;
};

class Ledgers : public testing::Test {
 protected:
  Ledgers() { session_.addLedger(book_); }

  std::string apply(const std::string& line) {
    const SourceText source("line", line);
    Change change;
    EXPECT_TRUE(reader_.read(source.text(), change).empty()) << line;
    return session_.apply(change).value_or("");
  }

  const std::string fw1_ =
      R"("update":[{"path":"/vela-l3:policy-source/policy-set[device-name=fw1]","value":{}}])";
  Trees trees_;
  VirtualClock clock_{3};
  Translation translation_{trees_};
  Session session_{trees_, translation_, clock_};
  ChangeReader reader_;
  Book book_{trees_};
};

TEST_F(Ledgers, AreToldBeforeTheLineIsApplied) {
  EXPECT_EQ(apply("{" + fw1_ + "}"), "");
  EXPECT_EQ(apply(R"({"time":5,)" + fw1_ + "}"), "");
  EXPECT_EQ(book_.times, (std::vector<Kel::Seconds>{3, 5}));
  EXPECT_EQ(book_.devicesBefore, (std::vector<std::size_t>{0, 1}));
}

TEST_F(Ledgers, AreNotToldOfALineThatIsRefused) {
  EXPECT_NE(apply(R"({"delete":["/vela-l3:policy-source/policy-set[device-name=fw1]"]})"), "");
  EXPECT_NE(apply(R"({"control":"stop"})"), "");
  EXPECT_TRUE(book_.times.empty());
}

TEST_F(Ledgers, RefuseALineWhichLeavesNoTraceThen) {
  EXPECT_EQ(apply(R"({"time":9,"signal":false,)" + fw1_ + "}"), "no room");
  EXPECT_EQ(trees_.policyV1->policySet().size(), 0U);
  EXPECT_EQ(clock_.time(), 3);
  EXPECT_EQ(session_.statistics().failed, 1U);
}

TEST_F(Ledgers, AreNotToldBehindOneThatRefuses) {
  Book second(trees_);
  session_.addLedger(second);
  apply(R"({"signal":false})");
  EXPECT_EQ(book_.times.size(), 1U);
  EXPECT_TRUE(second.times.empty());
}

TEST_F(Ledgers, HaveALineWhoseHandlersRaiseAnErrorSinceItIsApplied) {
  const Kel::Observer raising(
      *trees_.policyV1, [](Kel::AttrId, const void*) { throw std::runtime_error("out of luck"); });
  EXPECT_EQ(apply("{" + fw1_ + "}"), "out of luck");
  EXPECT_EQ(book_.times.size(), 1U);
  EXPECT_EQ(trees_.policyV1->policySet().size(), 1U);
}

}  // namespace
}  // namespace Host
