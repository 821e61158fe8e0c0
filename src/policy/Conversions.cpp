#include "policy/Conversions.h"

#include "Kel/Assert.h"

namespace VelaPolicyMonitor {

VelaL3V2::VelaAction toVelaL3V2Action(VelaL3::VelaAction action) {
  switch (action) {
    case VelaL3::VelaAction::forward:
      return VelaL3V2::VelaAction::forward;
    case VelaL3::VelaAction::drop:
      return VelaL3V2::VelaAction::drop;
    case VelaL3::VelaAction::redirect:
      return VelaL3V2::VelaAction::redirect;
  }
  Kel::assertionFailed(
      "false", "Should not be here",
      "VelaL3V2::VelaAction VelaPolicyMonitor::toVelaL3V2Action(VelaL3::VelaAction)");
}

VelaL3V2::VelaPolicyModifier toVelaL3V2PolicyModifier(VelaL3::VelaPolicyModifier modifier) {
  switch (modifier) {
    case VelaL3::VelaPolicyModifier::symmetric:
      return VelaL3V2::VelaPolicyModifier::symmetric;
    case VelaL3::VelaPolicyModifier::stateless:
      return VelaL3V2::VelaPolicyModifier::stateless;
  }
  Kel::assertionFailed("false", "Should not be here",
                       "VelaL3V2::VelaPolicyModifier "
                       "VelaPolicyMonitor::toVelaL3V2PolicyModifier(VelaL3::VelaPolicyModifier)");
}

VelaL3::VelaPolicyModifier toVelaL3V1PolicyModifier(VelaL3V2::VelaPolicyModifier modifier) {
  switch (modifier) {
    case VelaL3V2::VelaPolicyModifier::symmetric:
      return VelaL3::VelaPolicyModifier::symmetric;
    case VelaL3V2::VelaPolicyModifier::stateless:
      return VelaL3::VelaPolicyModifier::stateless;
  }
  Kel::assertionFailed("false", "Should not be here",
                       "VelaL3::VelaPolicyModifier "
                       "VelaPolicyMonitor::toVelaL3V1PolicyModifier(VelaL3V2::VelaPolicyModifier)");
}

}  // namespace VelaPolicyMonitor
