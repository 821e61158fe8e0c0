#include <gtest/gtest.h>

#include "Kel/Slab.h"
#include "common/Module.h"
#include "common/UpdateCookie.h"

namespace {

using VelaPolicyMonitor::UpdateCookie;

TEST(UpdateCookie, StartsUnmarkedWithItsNotificationsOn) {
  const auto cookie = VelaPolicyMonitor::updateCookieFactory();
  EXPECT_FALSE(cookie->updated());
  EXPECT_TRUE(cookie->hasNotificationActive());
  EXPECT_EQ(cookie->refCount(), 1U);
}

TEST(UpdateCookie, TheCreatorMakesANewOneEachTime) {
  const auto one = UpdateCookie::UpdateCookieIs();
  const auto other = UpdateCookie::UpdateCookieIs();
  EXPECT_NE(one, other);
  one->updatedIs(true);
  EXPECT_FALSE(other->updated());
}

TEST(UpdateCookie, IsMarkedAndCleared) {
  const auto cookie = VelaPolicyMonitor::updateCookieFactory();
  cookie->updatedIs(true);
  EXPECT_TRUE(cookie->updated());
  cookie->updatedIs(false);
  EXPECT_FALSE(cookie->updated());
}

TEST(UpdateCookie, CountsMarksAlsoOfAMarkedOneAndNotClearings) {
  const auto cookie = VelaPolicyMonitor::updateCookieFactory();
  EXPECT_EQ(cookie->marks(), 0U);
  cookie->updatedIs(true);
  cookie->updatedIs(true);
  EXPECT_EQ(cookie->marks(), 2U);
  cookie->updatedIs(false);
  EXPECT_EQ(cookie->marks(), 2U);
}

TEST(UpdateCookie, MarkingNoneIsNothing) {
  VelaPolicyMonitor::markUpdated(nullptr);
  const auto cookie = VelaPolicyMonitor::updateCookieFactory();
  VelaPolicyMonitor::markUpdated(cookie);
  EXPECT_TRUE(cookie->updated());
}

TEST(UpdateCookie, LivesAsLongAsAnyHolder) {
  auto first = VelaPolicyMonitor::updateCookieFactory();
  auto second = first;
  EXPECT_EQ(Kel::slabOf<UpdateCookie>().live(), 1U);
  first.reset();
  EXPECT_EQ(Kel::slabOf<UpdateCookie>().live(), 1U);
  second.reset();
  EXPECT_EQ(Kel::slabOf<UpdateCookie>().live(), 0U);
}

TEST(UpdateCookie, IsDescribedByItsNameAndItsOneAttribute) {
  const auto cookie = VelaPolicyMonitor::updateCookieFactory();
  const Kel::TypeDescriptor& type = cookie->fwkType().descriptor();
  EXPECT_STREQ(type.name, "VelaPolicyMonitor::UpdateCookie");
  EXPECT_EQ(cookie->fwkType().module, &kelModule(VelaPolicyMonitor::CommonType::updateCookie));
  EXPECT_EQ(cookie->fwkType().index, 0);
  ASSERT_EQ(type.rows.size(), 1U);
  EXPECT_STREQ(type.rows[0].name, "updated");
  cookie->updatedIs(true);
  EXPECT_TRUE(*static_cast<const bool*>(type.rows[0].find(*cookie, nullptr)));
}

}  // namespace
