#include "policy/PolicyTranslateMatchSm.h"

#include "common/Handling.h"
#include "common/Output.h"
#include "policy/Conversions.h"
#include "policy/Module.h"

namespace VelaPolicyMonitor {
namespace {

using Self = PolicyTranslateMatchSm;
using MatchV1 = VelaL3::VelaMatchConfig;
using MatchV2 = VelaL3V2::VelaMatchConfig;

constexpr TraceScope kTrace{"void VelaPolicyMonitor::PolicyTranslateMatchSm::", " return"};

/// One of the seven sets: where it lies in both generations, and what its handlers trace.
template <class K1, class K2>
struct MirroredSet {
  const Kel::Set<K1>& (MatchV1::*v1)() const noexcept;
  const Kel::Set<K2>& (MatchV2::*v2)() const noexcept;
  void (MatchV2::*insert)(const K2&);
  void (MatchV2::*erase)(const K2&);
  void (MatchV2::*insertAll)(const Kel::Set<K2>&);
  void (MatchV2::*reserve)(std::size_t);
  const char* keyedForm;
  const char* walkForm;
  bool keyedEntry;     // whether the keyed handler has an entry line
  unsigned walkLevel;  // of the lines for single entries in a walk
  const char* add;     // null: no lines for single entries
  const char* remove;
};

// A table: for each set where it lies, its forms, and its lines.
// Deliberate: the sets differ in which lines they write, and at which level.
// clang-format off
constexpr MirroredSet<Norv::IpGenPrefix, Norv::IpGenPrefix> kSrcIp{
    &MatchV1::srcIp, &MatchV2::srcIp, &MatchV2::srcIpIs, &MatchV2::srcIpDel,
    &MatchV2::srcIpAllIs, &MatchV2::srcIpReserve,
    "handleSrcIp(const Norv::IpGenPrefix&)", "handleSrcIp()",
    false, 8, " add src ip: ", " remove src ip: "};
constexpr MirroredSet<VelaL3::VelaIpRange, VelaL3V2::VelaIpRange> kSrcIpRange{
    &MatchV1::srcIpRange, &MatchV2::srcIpRange, &MatchV2::srcIpRangeIs, &MatchV2::srcIpRangeDel,
    &MatchV2::srcIpRangeAllIs, &MatchV2::srcIpRangeReserve,
    "handleSrcIpRange(const VelaL3::VelaIpRange&)", "handleSrcIpRange()",
    false, 8, " add src ip range: ", " remove src ip range: "};
constexpr MirroredSet<Norv::IpGenPrefix, Norv::IpGenPrefix> kDstIp{
    &MatchV1::dstIp, &MatchV2::dstIp, &MatchV2::dstIpIs, &MatchV2::dstIpDel,
    &MatchV2::dstIpAllIs, &MatchV2::dstIpReserve,
    "handleDstIp(const Norv::IpGenPrefix&)", "handleDstIp()",
    false, 8, " add dst ip: ", " remove dst ip: "};
constexpr MirroredSet<VelaL3::VelaIpRange, VelaL3V2::VelaIpRange> kDstIpRange{
    &MatchV1::dstIpRange, &MatchV2::dstIpRange, &MatchV2::dstIpRangeIs, &MatchV2::dstIpRangeDel,
    &MatchV2::dstIpRangeAllIs, &MatchV2::dstIpRangeReserve,
    "handleDstIpRange(const VelaL3::VelaIpRange&)", "handleDstIpRange()",
    false, 8, " add dst ip range: ", " remove dst ip range: "};
constexpr MirroredSet<Norv::IpProto, Norv::IpProto> kL3App{
    &MatchV1::l3App, &MatchV2::l3App, &MatchV2::l3AppIs, &MatchV2::l3AppDel,
    &MatchV2::l3AppAllIs, &MatchV2::l3AppReserve,
    "handleL3App(Norv::IpProto)", "handleL3App()",
    false, 6, " add ip proto: ", " remove ip proto: "};
constexpr MirroredSet<VelaL3::VelaL4App, VelaL3V2::VelaL4App> kDstL4App{
    &MatchV1::dstL4App, &MatchV2::dstL4App, &MatchV2::dstL4AppIs, &MatchV2::dstL4AppDel,
    &MatchV2::dstL4AppAllIs, &MatchV2::dstL4AppReserve,
    "handleDstL4App(VelaL3::VelaL4App)", "handleDstL4App()",
    true, 0, nullptr, nullptr};
constexpr MirroredSet<VelaL3::VelaL4AppRange, VelaL3V2::VelaL4AppRange> kDstL4AppRange{
    &MatchV1::dstL4AppRange, &MatchV2::dstL4AppRange,
    &MatchV2::dstL4AppRangeIs, &MatchV2::dstL4AppRangeDel,
    &MatchV2::dstL4AppRangeAllIs, &MatchV2::dstL4AppRangeReserve,
    "handleDstL4AppRange(const VelaL3::VelaL4AppRange&)", "handleDstL4AppRange()",
    true, 0, nullptr, nullptr};
// clang-format on

}  // namespace

constexpr Kel::Dispatch<Self> PolicyTranslateMatchSm::matchV1Dispatch{
    Kel::On<Self>::key<MatchV1::srcIpAttr, &Self::handleSrcIp>,
    Kel::On<Self>::key<MatchV1::srcIpRangeAttr, &Self::handleSrcIpRange>,
    Kel::On<Self>::key<MatchV1::dstIpAttr, &Self::handleDstIp>,
    Kel::On<Self>::key<MatchV1::dstIpRangeAttr, &Self::handleDstIpRange>,
    Kel::On<Self>::key<MatchV1::l3AppAttr, &Self::handleL3App>,
    Kel::On<Self>::key<MatchV1::dstL4AppAttr, &Self::handleDstL4App>,
    Kel::On<Self>::key<MatchV1::dstL4AppRangeAttr, &Self::handleDstL4AppRange>,
};

PolicyTranslateMatchSm::PolicyTranslateMatchSm(const Brix::Ptr<const MatchV1>& matchV1,
                                               const Brix::Ptr<MatchV2>& matchV2,
                                               const Brix::Ptr<UpdateCookie>& cookie)
    : matchV1_(matchV1, *this), matchV2_(matchV2), cookie_(cookie), initialized_(false) {
  start(*this);
}

PolicyTranslateMatchSm::~PolicyTranslateMatchSm() { retire(); }

// Deliberate: no clean-up. The per-origin machine deletes the version-2 match as a whole.
void PolicyTranslateMatchSm::tearDown() noexcept {
  hasNotificationActiveIs(false);
  kelDoZombieReactors(true);
  matchV1_.activeIs(false);
}

Brix::Ptr<PolicyTranslateMatchSm> PolicyTranslateMatchSm::PolicyTranslateMatchSmIs(
    const Brix::Ptr<const MatchV1>& matchV1, const Brix::Ptr<MatchV2>& matchV2,
    const Brix::Ptr<UpdateCookie>& cookie) {
  return make<Self>(matchV1, matchV2, cookie);
}

Brix::Ptr<PolicyTranslateMatchSm> policyTranslateMatchSmFactory(
    const Brix::Ptr<const MatchV1>& matchV1, const Brix::Ptr<MatchV2>& matchV2,
    const Brix::Ptr<UpdateCookie>& cookie) {
  return PolicyTranslateMatchSm::PolicyTranslateMatchSmIs(matchV1, matchV2, cookie);
}

Kel::FwkType PolicyTranslateMatchSm::fwkType() const noexcept {
  return fwkTypeOf(PolicyType::match);
}

void PolicyTranslateMatchSm::hasNotificationActiveIs(bool on) noexcept { switchParts(*this, on); }

bool PolicyTranslateMatchSm::builtFrom(const Brix::Ptr<const MatchV1>& matchV1,
                                       const Brix::Ptr<MatchV2>& matchV2,
                                       const Brix::Ptr<UpdateCookie>& cookie) const noexcept {
  return this->matchV1() == matchV1 && matchV2_ == matchV2 && cookie_ == cookie;
}

void PolicyTranslateMatchSm::handleInitialized() {
  const Handling run{*this, kTrace, "handleInitialized()"};
  run.enter();
  initialized_ = true;
  if (matchV1()) {
    // Nobody may have been at them for long. Those that most matches fill are fetched at once, and
    // not each when its turn comes.
    const auto prefetch = [this](const auto&... set) { ((*matchV1().*set.v1)().prefetch(), ...); };
    prefetch(kSrcIp, kSrcIpRange, kDstIp, kDstIpRange, kDstL4App);
  }
  handleSrcIp();
  handleSrcIpRange();
  handleDstIp();
  handleDstIpRange();
  handleL3App();
  handleDstL4App();
  handleDstL4AppRange();
  run.leave();
}

template <const auto& Mirrored, class Key>
void PolicyTranslateMatchSm::mirror(const Key& key) {
  if (!initialized_) {  // Unreachable: nothing calls it before, and nothing takes the flag back
    return;
  }
  const Handling run{*this, kTrace, Mirrored.keyedForm};
  if constexpr (Mirrored.keyedEntry) {
    run.enter();
  }
  if (matchV1() && (*matchV1().*Mirrored.v1)().contains(key)) {
    if constexpr (Mirrored.add != nullptr) {
      run.act(Mirrored.add, key);
    }
    (output(matchV2_, Mirrored.keyedForm).*Mirrored.insert)(toV2(key));
  } else {
    if constexpr (Mirrored.remove != nullptr) {
      run.act(Mirrored.remove, key);
    }
    if (matchV2_) {
      (*matchV2_.*Mirrored.erase)(toV2(key));
    }
  }
  markUpdated(cookie_);
  run.leave();
}

template <const auto& Mirrored>
void PolicyTranslateMatchSm::mirrorAll() {
  if (!initialized_) {  // Unreachable: nothing calls it before, and nothing takes the flag back
    return;
  }
  const Handling run{*this, kTrace, Mirrored.walkForm};
  run.enter();
  bool changed = false;
  if (matchV2_) {
    for (const auto& entry : (*matchV2_.*Mirrored.v2)()) {
      if (matchV1() && (*matchV1().*Mirrored.v1)().contains(toV1(entry))) {
        continue;
      }
      if constexpr (Mirrored.remove != nullptr) {
        run.decide(Mirrored.walkLevel, Mirrored.remove, entry);
      }
      (*matchV2_.*Mirrored.erase)(entry);
      changed = true;
    }
  }
  if (matchV1()) {
    const auto& from = (*matchV1().*Mirrored.v1)();
    if (matchV2_) {
      (*matchV2_.*Mirrored.reserve)(from.size());
    }
    if (isFresh<Mirrored>()) {
      fill<Mirrored>(run);
      changed = changed || !from.empty();
    } else {
      for (const auto& key : from) {
        if (matchV2_ && (*matchV2_.*Mirrored.v2)().contains(toV2(key))) {
          continue;
        }
        if constexpr (Mirrored.add != nullptr) {
          run.decide(Mirrored.walkLevel, Mirrored.add, key);
        }
        (output(matchV2_, Mirrored.walkForm).*Mirrored.insert)(toV2(key));
        changed = true;
      }
    }
  }
  if (changed) {
    markUpdated(cookie_);
  }
  run.leave();
}

/// Whether no key is in version 2, and none can come while others are added, as nobody is told: so
/// it is with nearly all sets when the tree is mirrored first.
template <const auto& Mirrored>
bool PolicyTranslateMatchSm::isFresh() const {
  return matchV2_ && (*matchV2_.*Mirrored.v2)().empty() &&
         matchV2_->publisher().subscriberCount() == 0;
}

template <const auto& Mirrored>
void PolicyTranslateMatchSm::fill(const Handling& run) {
  const auto& from = (*matchV1().*Mirrored.v1)();
  if constexpr (Mirrored.add != nullptr) {
    if (Handling::listens(Mirrored.walkLevel)) {
      for (const auto& key : from) {
        run.decide(Mirrored.walkLevel, Mirrored.add, key);
      }
    }
  }
  if constexpr (requires { (*matchV2_.*Mirrored.insertAll)(from); }) {
    (*matchV2_.*Mirrored.insertAll)(from);
  } else {
    for (const auto& key : from) {
      (*matchV2_.*Mirrored.insert)(toV2(key));
    }
  }
}

void PolicyTranslateMatchSm::handleSrcIp(const Norv::IpGenPrefix& prefix) {
  mirror<kSrcIp>(prefix);
}
void PolicyTranslateMatchSm::handleSrcIp() { mirrorAll<kSrcIp>(); }
void PolicyTranslateMatchSm::handleSrcIpRange(const VelaL3::VelaIpRange& range) {
  mirror<kSrcIpRange>(range);
}
void PolicyTranslateMatchSm::handleSrcIpRange() { mirrorAll<kSrcIpRange>(); }
void PolicyTranslateMatchSm::handleDstIp(const Norv::IpGenPrefix& prefix) {
  mirror<kDstIp>(prefix);
}
void PolicyTranslateMatchSm::handleDstIp() { mirrorAll<kDstIp>(); }
void PolicyTranslateMatchSm::handleDstIpRange(const VelaL3::VelaIpRange& range) {
  mirror<kDstIpRange>(range);
}
void PolicyTranslateMatchSm::handleDstIpRange() { mirrorAll<kDstIpRange>(); }
void PolicyTranslateMatchSm::handleL3App(Norv::IpProto protocol) { mirror<kL3App>(protocol); }
void PolicyTranslateMatchSm::handleL3App() { mirrorAll<kL3App>(); }
void PolicyTranslateMatchSm::handleDstL4App(VelaL3::VelaL4App app) { mirror<kDstL4App>(app); }
void PolicyTranslateMatchSm::handleDstL4App() { mirrorAll<kDstL4App>(); }
void PolicyTranslateMatchSm::handleDstL4AppRange(const VelaL3::VelaL4AppRange& range) {
  mirror<kDstL4AppRange>(range);
}
void PolicyTranslateMatchSm::handleDstL4AppRange() { mirrorAll<kDstL4AppRange>(); }

}  // namespace VelaPolicyMonitor
