#include <gtest/gtest.h>

#include <cstdint>

#include "Pario/Site.h"
#include "Pario/SiteOf.h"

namespace {

constexpr Pario::Source kSource{"VelaPolicyMonitor", "void Space::Class::", "Source.cpp"};
constexpr const char* kForm = "handle(int)";
const Pario::Impl::Shape& kNumber = Pario::Impl::ShapeOf<unsigned>::shape;
const Pario::Impl::Shape& kLiteral = Pario::Impl::ShapeOf<Pario::Literal>::shape;

TEST(Site, IsTheSameWhenAnotherThreadHasRegisteredItMeanwhile) {
  const Pario::Line line{kSource, kForm, {6, 1}};
  const auto* const site = Pario::Impl::registerSite(line, kNumber, {});
  ASSERT_NE(site, nullptr);
  EXPECT_EQ(Pario::Impl::registerSite(line, kNumber, {}), site);
}

TEST(Site, IsAnotherForOtherLiteralsAndOtherTypes) {
  const Pario::Line line{kSource, kForm, {6, 2}};
  const auto* const adds = Pario::Impl::registerSite(line, kLiteral, {" add "});
  EXPECT_NE(Pario::Impl::registerSite(line, kLiteral, {" remove "}), adds);
  EXPECT_NE(Pario::Impl::registerSite(line, kNumber, {}), adds);
  EXPECT_EQ(Pario::Impl::registerSite(line, kLiteral, {adds->literals[0]}), adds);
}

TEST(Site, IsAnotherForAnotherLineAlsoInTheSameBucket) {
  const Pario::Line line{kSource, kForm, {6, 3}};
  std::uint32_t number = 4;
  while (&Pario::Impl::bucketOf({kSource, kForm, {6, number}}) != &Pario::Impl::bucketOf(line)) {
    ++number;
  }
  const auto* const site = Pario::Impl::registerSite(line, kNumber, {});
  const Pario::Line other{kSource, kForm, {6, number}};
  const auto* const second = Pario::Impl::registerSite(other, kNumber, {});
  EXPECT_NE(second, site);
  EXPECT_EQ(second->next, site);
  EXPECT_EQ(Pario::Impl::registerSite(line, kNumber, {}), site);
  EXPECT_EQ(Pario::Impl::registerSite(other, kNumber, {}), second);
}

}  // namespace
