#include "common/UpdateCookie.h"

#include <array>

#include "common/Module.h"

namespace VelaPolicyMonitor {

Brix::Ptr<UpdateCookie> UpdateCookie::UpdateCookieIs() {
  Brix::Ptr<UpdateCookie> cookie(new UpdateCookie, Brix::adopt);
  cookie->hasNotificationActiveIs(true);
  return cookie;
}

Kel::FwkType UpdateCookie::fwkType() const noexcept { return fwkTypeOf(CommonType::updateCookie); }

Brix::Ptr<UpdateCookie> updateCookieFactory() { return UpdateCookie::UpdateCookieIs(); }

const Kel::Module& kelModule(CommonType /*type*/) {
  static constexpr std::array<Kel::Module::TypeFunction, 1> kTypes{&Kel::describe<UpdateCookie>};
  static constexpr Kel::Module kModule{"VelaPolicyMonitor.common", kTypes};
  return kModule;
}

}  // namespace VelaPolicyMonitor
