#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "Kel/Attributes.h"
#include "framework/Kel/Model.h"
#include "framework/Kel/Notes.h"

namespace Kel {
namespace {

using Model::Rank;
using Model::Whole;

/// All access goes through rows: the object, its keys and values have no type here.
class NamelessAccess : public ::testing::Test {
 protected:
  const Row& row(const char* name) { return *describe<Whole>().row(name); }
  PtrInterface& object() { return *whole; }
  std::size_t visits(const char* name) {
    std::size_t count = 0;
    row(name).walk(object(), &count, [](void* context, const void* /*key*/, const void* value) {
      EXPECT_NE(value, nullptr);
      ++*static_cast<std::size_t*>(context);
    });
    return count;
  }

  Brix::Ptr<Whole> whole = Whole::WholeIs("its name");
  Notes notes{*whole};
};

TEST_F(NamelessAccess, ReadsAConstantAndCannotWriteIt) {
  const Row& name = row("name");
  EXPECT_EQ(name.kind, RowKind::constant);
  EXPECT_EQ(*static_cast<const String*>(name.find(object(), nullptr)), "its name");
  EXPECT_EQ(name.put, nullptr);
  EXPECT_EQ(name.erase, nullptr);
  EXPECT_EQ(name.walk, nullptr);
}

TEST_F(NamelessAccess, ReadsAndWritesAScalarWithNotification) {
  const std::uint32_t five = 5;
  EXPECT_EQ(row("count").put(object(), nullptr, &five), nullptr);
  EXPECT_EQ(whole->count(), 5U);
  EXPECT_EQ(*static_cast<const std::uint32_t*>(row("count").find(object(), nullptr)), 5U);
  EXPECT_EQ(notes.take(), Noted{"count"});
}

TEST_F(NamelessAccess, WritesATimeAsATimeThatWasWritten) {
  const Seconds time = kNoTime;
  row("time").put(object(), nullptr, &time);
  EXPECT_FALSE(isNoTime(whole->time()));
}

TEST_F(NamelessAccess, InsertsFindsWalksAndErasesMembersOfASet) {
  const std::uint32_t seven = 7;
  const Row& number = row("number");
  EXPECT_EQ(number.find(object(), &seven), nullptr);
  number.put(object(), &seven, nullptr);
  EXPECT_EQ(*static_cast<const std::uint32_t*>(number.find(object(), &seven)), 7U);
  EXPECT_EQ(number.size(object()), 1U);
  EXPECT_EQ(visits("number"), 1U);
  number.erase(object(), &seven);
  EXPECT_EQ(number.size(object()), 0U);
  EXPECT_EQ(notes.take(), (Noted{"number 7", "number 7"}));
}

TEST_F(NamelessAccess, WritesFindsWalksAndErasesValuesOfAMap) {
  const String key("red");
  const String value("net-red");
  const Row& label = row("label");
  EXPECT_STREQ(label.keyName, "of");
  EXPECT_STREQ(label.valueName, "text");
  EXPECT_EQ(label.find(object(), &key), nullptr);
  label.put(object(), &key, &value);
  EXPECT_EQ(*static_cast<const String*>(label.find(object(), &key)), "net-red");
  EXPECT_EQ(visits("label"), 1U);
  label.erase(object(), &key);
  EXPECT_EQ(label.size(object()), 0U);
}

TEST_F(NamelessAccess, CreatesFindsWalksAndErasesEntries) {
  const String key("p");
  const Row& part = row("part");
  EXPECT_STREQ(part.keyName, "name");
  EXPECT_EQ(&part.target(), &describe<Model::Part>());
  EXPECT_EQ(part.find(object(), &key), nullptr);
  auto* const made = static_cast<PtrInterface*>(part.put(object(), &key, nullptr));
  EXPECT_EQ(made, whole->part("p").get());
  EXPECT_EQ(part.put(object(), &key, nullptr), made);
  EXPECT_EQ(part.find(object(), &key), static_cast<const PtrInterface*>(made));
  EXPECT_EQ(visits("part"), 1U);
  part.erase(object(), &key);
  EXPECT_EQ(part.size(object()), 0U);
  EXPECT_EQ(notes.take(), (Noted{"part p", "part p"}));
}

TEST_F(NamelessAccess, WalksSortedEntriesInTheirOrder) {
  for (const std::uint32_t rank : {1U, 3U, 2U}) {
    const Rank key{rank};
    row("step").put(object(), &key, nullptr);
  }
  std::vector<std::uint32_t> ranks;
  row("step").walk(object(), &ranks, [](void* context, const void* key, const void*) {
    static_cast<std::vector<std::uint32_t>*>(context)->push_back(
        static_cast<const Rank*>(key)->value);
  });
  EXPECT_EQ(ranks, (std::vector<std::uint32_t>{3, 2, 1}));
}

TEST_F(NamelessAccess, CreatesFindsAndErasesASingleEntity) {
  const Row& leaf = row("leaf");
  EXPECT_EQ(leaf.kind, RowKind::single);
  EXPECT_EQ(leaf.find(object(), nullptr), nullptr);
  auto* const made = static_cast<PtrInterface*>(leaf.put(object(), nullptr, nullptr));
  EXPECT_EQ(made, whole->leaf().get());
  EXPECT_EQ(leaf.find(object(), nullptr), static_cast<const PtrInterface*>(made));
  leaf.erase(object(), nullptr);
  EXPECT_EQ(whole->leaf(), nullptr);
  EXPECT_EQ(notes.take(), (Noted{"leaf", "leaf"}));
}

TEST(AttributeConstants, CarryTheIdAndTheKeyType) {
  static_assert(Whole::numberAttr.id == 140);
  static_assert(std::is_same_v<KeyOf<Whole::numberAttr>, std::uint32_t>);
  static_assert(std::is_same_v<KeyOf<Whole::labelAttr>, String>);
  static_assert(std::is_same_v<KeyOf<Whole::partAttr>, String>);
  static_assert(std::is_same_v<KeyOf<Whole::stepAttr>, Rank>);
  static_assert(std::is_same_v<KeyOf<Whole::countAttr>, void>);
  static_assert(std::is_same_v<KeyOf<Whole::leafAttr>, void>);
  EXPECT_EQ(Whole::stepAttr.id, 143);
}

}  // namespace
}  // namespace Kel
