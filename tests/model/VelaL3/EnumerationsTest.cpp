#include "VelaL3/VelaRuleOriginConfig.h"
#include "model/Enumerations.h"

namespace {

TEST(VelaL3Action, PrintsAndReadsItsNamesAmongAllOrdinals) {
  ModelTests::expectNames<VelaL3::VelaAction>({"forward", "drop", "redirect"},
                                              "forward, drop or redirect");
}

TEST(VelaL3PolicyModifier, PrintsAndReadsItsNamesAmongAllOrdinals) {
  ModelTests::expectNames<VelaL3::VelaPolicyModifier>({"symmetric", "stateless"},
                                                      "symmetric or stateless");
}

}  // namespace
