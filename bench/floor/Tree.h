#pragma once

#include <optional>

#include "VelaL3/VelaL3.h"
#include "floor/Kits.h"

/// The policy tree from a kit of containers, with the member names of the library's own entities,
/// so that both are filled by the same code. Nobody is told of anything.
namespace Bench::Floor {

/// The bare numbers and names as keys: what the library hashes, hashed the same way.
template <class T>
struct KeyOn {
  T value;
  std::uint32_t hash() const { return Kel::hashOf(value); }
  bool operator==(const KeyOn&) const = default;
  auto operator<=>(const KeyOn&) const = default;
};
using Name = KeyOn<Brix::String>;
using Number = KeyOn<std::uint32_t>;

template <class Kit>
class Match {
 public:
  void srcIpIs(const Prefix& key) { srcIp_.insert(key); }
  void dstIpIs(const Prefix& key) { dstIp_.insert(key); }
  void srcIpRangeIs(const VelaL3::VelaIpRange& key) { srcIpRange_.insert(key); }
  void dstL4AppIs(const VelaL3::VelaL4App& key) { dstL4App_.insert(key); }
  auto& dstIp() { return dstIp_; }

  void copyFrom(const Match& from) {
    srcIp_.copyFrom(from.srcIp_);
    srcIpRange_.copyFrom(from.srcIpRange_);
    dstIp_.copyFrom(from.dstIp_);
    dstIpRange_.copyFrom(from.dstIpRange_);
    l3App_.copyFrom(from.l3App_);
    dstL4App_.copyFrom(from.dstL4App_);
    dstL4AppRange_.copyFrom(from.dstL4AppRange_);
  }

 private:
  template <class Key>
  using Set = typename Kit::template Set<Key>;

  Set<Prefix> srcIp_, dstIp_;
  Set<VelaL3::VelaIpRange> srcIpRange_, dstIpRange_;
  Set<Norv::IpProto> l3App_;
  Set<VelaL3::VelaL4App> dstL4App_;
  Set<VelaL3::VelaL4AppRange> dstL4AppRange_;
};

template <class Kit>
class Origin {
 public:
  void actionIs(VelaL3::VelaAction action) { action_ = action; }
  Match<Kit>* matchIs() { return &(match_ ? *match_ : match_.emplace()); }
  void copyFrom(const Origin& from) {
    tags_ = from.tags_;
    action_ = from.action_;
    log_ = from.log_;
    modifiers_ = from.modifiers_;
    if (from.match_) {
      matchIs()->copyFrom(*from.match_);
    }
  }

 private:
  Brix::String tags_;
  VelaL3::VelaAction action_{};
  bool log_ = false;
  std::uint8_t modifiers_ = 0;  // a bit for each
  std::optional<Match<Kit>> match_;
};

/// Copies every entry of a map, under the key that `keyOf` makes of its own.
template <class Map, class KeyOf>
void copyEntries(const Map& from, Map& to, KeyOf keyOf) {
  from.forEach([&](const auto& key, const auto& value) { to.at(keyOf(key))->copyFrom(value); });
}
inline constexpr auto sameKey = [](const auto& key) -> const auto& { return key; };

template <class Kit>
class Rule {
 public:
  Origin<Kit>* originIs(const Brix::String& name) { return origins_.at(Name{name}); }
  void copyFrom(const Rule& from) { copyEntries(from.origins_, origins_, sameKey); }

 private:
  typename Kit::template Map<Name, Origin<Kit>> origins_;
};

template <class Kit>
class Policy {
 public:
  Rule<Kit>* ruleIs(std::uint32_t priority) { return rules_.at(Number{priority}); }
  void copyFrom(const Policy& from) { copyEntries(from.rules_, rules_, sameKey); }

 private:
  typename Kit::template Sorted<Number, Rule<Kit>> rules_;
};

template <class Kit>
class PolicySet {
 public:
  Policy<Kit>* policyIs(const L3::VrfName& vrf) { return policies_.at(Name{vrf.stringValue()}); }
  void copyFrom(const PolicySet& from) {
    copyEntries(from.policies_, policies_, [](const Name& vrf) {
      return Name{Brix::String("net-" + std::string(vrf.value.view()))};
    });
  }

 private:
  typename Kit::template Map<Name, Policy<Kit>> policies_;
};

template <class Kit>
class Source {
 public:
  PolicySet<Kit>* policySetIs(const Brix::String& device) { return sets_.at(Name{device}); }
  void copyFrom(const Source& from) { copyEntries(from.sets_, sets_, sameKey); }

 private:
  typename Kit::template Map<Name, PolicySet<Kit>> sets_;
};

}  // namespace Bench::Floor
