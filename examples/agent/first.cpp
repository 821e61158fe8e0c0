// The least that an agent does: it owns the trees, loads one rule, starts the translation, and
// reads version 2. Every later change of version 1 is translated before the call that makes it
// returns.
#include <iostream>

#include "Kel/Kel.h"
#include "policy/VelaPolicyTranslateSm.h"

int main() {
  auto policySrcV1 = VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  auto policySrcV2 = VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  auto vpmStatus = VelaPolicyMonitor::Status::StatusIs();

  // What the monitor knows: the device, and what its VRF is called in the network.
  auto record = vpmStatus->devicePolicyListIs("fw1");
  record->netVrfNameByVrfIs("red", "net-red");

  // The root mirrors what there is when it is built, and from then on every change.
  auto root = VelaPolicyMonitor::policyTranslateRootSmFactory(policySrcV1, policySrcV2, vpmStatus);

  auto policy = policySrcV1->policySetIs("fw1")->policyIs(L3::VrfName("red"));
  auto origin = policy->ruleIs(VelaL3::VelaPriority(20000))->originIs("web");
  origin->actionIs(VelaL3::VelaAction::drop);
  origin->matchIs()->dstIpIs(Norv::IpGenPrefix("10.1.0.0/16"));
  policy->timestampIs(Kel::System::currentTime());  // the burst ends: version 2 is stamped

  auto policyV2 = policySrcV2->policySet("fw1")->policy("net-red");
  auto ruleV2 = policyV2->rule(VelaL3V2::VelaPriority(20000));
  for (const Norv::IpGenPrefix& prefix : ruleV2->origin("web")->match()->dstIp()) {
    std::cout << "rule 20000 of net-red: " << prefix.stringValue() << '\n';
  }
}
