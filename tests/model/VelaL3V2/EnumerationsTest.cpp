#include "VelaL3V2/VelaRuleOriginConfig.h"
#include "model/Enumerations.h"

namespace {

TEST(VelaL3V2Action, PrintsAndReadsItsNamesAmongAllOrdinals) {
  ModelTests::expectNames<VelaL3V2::VelaAction>({"forward", "drop", "redirect"},
                                                "forward, drop or redirect");
}

TEST(VelaL3V2PolicyModifier, PrintsAndReadsItsNamesAmongAllOrdinals) {
  ModelTests::expectNames<VelaL3V2::VelaPolicyModifier>({"symmetric", "stateless"},
                                                        "symmetric or stateless");
}

}  // namespace
