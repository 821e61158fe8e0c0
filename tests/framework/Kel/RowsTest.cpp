#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Kel/Rows.h"
#include "framework/Kel/Model.h"

namespace Kel {
namespace {

TEST(Rows, AreCollectedInTheOrderOfTheirIdsFromOneEndOfTheWindowToTheOther) {
  std::vector<std::string> rows;
  for (const Row& row : describe<Model::Whole>().rows) {
    rows.push_back(std::to_string(row.id) + " " + row.name + " " + nameOf(row.kind));
  }
  EXPECT_EQ(rows, (std::vector<std::string>{"128 name constant", "130 count value",
                                            "131 time value", "132 text value", "140 number set",
                                            "141 label map", "142 part entries", "143 step entries",
                                            "144 leaf single", "300 last value"}));
}

TEST(Rows, AreFoundByNameAndById) {
  const TypeDescriptor& type = describe<Model::Whole>();
  EXPECT_STREQ(type.row("part")->name, "part");
  EXPECT_EQ(type.row("part"), type.row(AttrId{142}));
  EXPECT_EQ(type.row("parts"), nullptr);
  EXPECT_EQ(type.row(""), nullptr);
  for (const int id : {0, 127, 129, 145, 299, 301, -1}) {
    EXPECT_EQ(type.row(static_cast<AttrId>(id)), nullptr) << id;
  }
  EXPECT_STREQ(type.row(AttrId{128})->name, "name");
  EXPECT_STREQ(type.row(AttrId{300})->name, "last");
}

TEST(Rows, ProveTwinsEqualInIdsNamesAndKinds) {
  static_assert(twins<Model::Part, Model::Twin>());
  static_assert(!twins<Model::Part, Model::Leaf>());
  static_assert(!twins<Model::Part, Model::Step>());
  EXPECT_EQ(rowsOf<Model::Part>.size(), rowsOf<Model::Twin>.size());
}

TEST(Rows, NameEveryKind) {
  std::vector<std::string> names;
  for (int kind = 0; kind <= static_cast<int>(RowKind::children); ++kind) {
    names.emplace_back(nameOf(static_cast<RowKind>(kind)));
  }
  EXPECT_EQ(names, (std::vector<std::string>{"constant", "value", "set", "map", "entries", "single",
                                             "object", "input", "children"}));
}

TEST(TypeDescriptors, LeadToWhatObserversOfAnObjectSubscribeTo) {
  const auto whole = Model::Whole::WholeIs();
  EXPECT_EQ(describe<Model::Whole>().publisher(*whole), whole->publisher());
}

TEST(TypeDescriptors, AreReachedThroughModuleAndIndexOfAnObject) {
  const auto whole = Model::Whole::WholeIs();
  const FwkType type = whole->fwkType();
  EXPECT_STREQ(type.module->name(), "Model");
  EXPECT_EQ(type.index, 3);
  EXPECT_EQ(type.module->size(), 5U);
  EXPECT_STREQ(type.descriptor().name, "Model::Whole");
  EXPECT_EQ(&type.descriptor(), &describe<Model::Whole>());
  EXPECT_EQ(type, whole->fwkType());
  EXPECT_NE(type, whole->leafIs()->fwkType());
}

}  // namespace
}  // namespace Kel
