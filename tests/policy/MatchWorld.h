#pragma once

#include "policy/PolicyWorld.h"

namespace PolicyTests {

/// A match machine between two matches, without the levels above. Every change of the version-2
/// match is noted: "+" or "-" and the key.
class MatchWorld : public PolicyWorld {
 protected:
  using MatchV2 = VelaL3V2::VelaMatchConfig;

  void make() {
    sm = VelaPolicyMonitor::policyTranslateMatchSmFactory(v1, v2, cookie);
    marked();
    noted();
  }
  /// Changes of version 1 do not reach the machine any more: for walks over sets that differ.
  void makeDeaf() {
    make();
    sm->hasNotificationActiveIs(false);
  }
  /// Whether the cookie was marked since the last call.
  bool marked() const {
    const bool was = cookie->updated();
    cookie->updatedIs(false);
    return was;
  }
  template <class Key>
  void noteKey(bool present, const void* key) {
    note((present ? "+" : "-") + Kel::textOf(keyOf<Key>(key)));
  }
  void noteChange(AttrId id, const void* key) {
    if (id == MatchV2::srcIpAttr.id) {
      noteKey<IpGenPrefix>(v2->srcIp(keyOf<IpGenPrefix>(key)), key);
    } else if (id == MatchV2::dstIpAttr.id) {
      noteKey<IpGenPrefix>(v2->dstIp(keyOf<IpGenPrefix>(key)), key);
    } else if (id == MatchV2::srcIpRangeAttr.id) {
      noteKey<VelaL3V2::VelaIpRange>(v2->srcIpRange(keyOf<VelaL3V2::VelaIpRange>(key)), key);
    } else if (id == MatchV2::dstIpRangeAttr.id) {
      noteKey<VelaL3V2::VelaIpRange>(v2->dstIpRange(keyOf<VelaL3V2::VelaIpRange>(key)), key);
    } else if (id == MatchV2::l3AppAttr.id) {
      noteKey<IpProto>(v2->l3App(keyOf<IpProto>(key)), key);
    } else {
      note("attribute " + std::to_string(id));
    }
  }

  /// Another match of version 2, which nobody watches.
  Ptr<MatchV2> v2Unwatched() const {
    return sourceV2->policySet("fw1")
        ->policy("net-red")
        ->rule(p2(20000))
        ->originIs("dns")
        ->matchIs();
  }

  Ptr<VelaL3::VelaMatchConfig> v1 = matchV1();
  Ptr<VelaL3V2::VelaMatchConfig> v2 = sourceV2->policySetIs(Vela::DeviceName("fw1"))
                                          ->policyIs("net-red")
                                          ->ruleIs(p2(20000))
                                          ->originIs("web")
                                          ->matchIs();
  Ptr<UpdateCookie> cookie = VelaPolicyMonitor::updateCookieFactory();
  Ptr<PolicyTranslateMatchSm> sm;
  Observer watch{*v2, [this](AttrId id, const void* key) { noteChange(id, key); }};
};

}  // namespace PolicyTests
