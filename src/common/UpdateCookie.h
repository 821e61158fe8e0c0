#pragma once

#include <cstdint>

#include "Kel/Attributes.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// The flag that a per-VRF state machine shares with all machines below it: each sets it when it
/// has changed version 2, and the per-VRF machine then stamps the time once per burst.
class UpdateCookie final : public Kel::PtrInterface, public Kel::SlabAllocated<UpdateCookie> {
  using Self = UpdateCookie;

 public:
  static constexpr const char* kelTypeName() { return "VelaPolicyMonitor::UpdateCookie"; }

  KEL_CONST(130, updated, bool)  ///< Whether version 2 was changed since the last stamp.

  UpdateCookie() noexcept : updated_(false) {}
  ~UpdateCookie() override { hasNotificationActiveIs(false); }
  static Brix::Ptr<UpdateCookie> UpdateCookieIs();
  Kel::FwkType fwkType() const noexcept override;

  /// Sets or clears the flag; setting is counted in marks().
  void updatedIs(bool on) noexcept {
    updated_ = on;
    marks_ += on ? 1 : 0;
  }

  /// How often the flag has been set. Whoever clears the flag after acting on it compares: what was
  /// marked while it acted must not be lost.
  std::uint32_t marks() const noexcept { return marks_; }

 private:
  std::uint32_t marks_ = 0;
};

/// The library's entry point for making a cookie.
Brix::Ptr<UpdateCookie> updateCookieFactory();

/// Records that version 2 was changed. A null cookie is legal everywhere: nothing is recorded.
inline void markUpdated(const Brix::Ptr<UpdateCookie>& cookie) noexcept {
  if (cookie) {
    cookie->updatedIs(true);
  }
}

}  // namespace VelaPolicyMonitor
