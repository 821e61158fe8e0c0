#pragma once

#include <map>
#include <memory>
#include <string>

#include "Measure.h"
#include "Pario/Pario.h"
#include "Shape.h"
#include "VelaL3V2/VelaL3V2.h"
#include "floor/Tree.h"
#include "monitor/Status.h"
#include "policy/VelaPolicyTranslateSm.h"

/// The two ways to keep version 2 like version 1, with the same members.
namespace Bench {

/// The library, with all machines.
class Library {
 public:
  struct WhileMeasured {};

  explicit Library(const Shape& shape) : matches_(fill(shape)) {}

  void mirror() { root_ = VelaPolicyMonitor::policyTranslateRootSmFactory(v1_, v2_, status_); }
  void link() {}
  void drop() { root_ = nullptr; }
  void suspend() { root_->hasNotificationActiveIs(false); }
  void resume() { root_->hasNotificationActiveIs(true); }

  std::size_t size() const { return matches_.size(); }
  void insert(std::uint32_t match, const Prefix& key) { matches_[match]->dstIpIs(key); }
  void erase(std::uint32_t match, const Prefix& key) { matches_[match]->dstIpDel(key); }
  void endOfBurst() { v1_->policySet("fw0")->policy(L3::VrfName("vrf0"))->timestampIs(1); }
  /// Whether both generations of a match have the key.
  bool mirrored(std::uint32_t match, const Prefix& key) const {
    const std::uint32_t policy = match / 10'000;
    return matches_[match]->dstIp(key) &&
           v2_->policySet(deviceName(policy / 2))
               ->policy("net-" + vrfName(policy))
               ->rule(VelaL3V2::VelaPriority(20'000 + match % 10'000 / 2))
               ->origin(match % 2 == 0 ? "web" : "telemetry")
               ->match()
               ->dstIp(key);
  }

 private:
  std::vector<VelaL3::VelaMatchConfig*> fill(const Shape& shape) {
    for (std::uint32_t policy = 0; policy * 10'000 < shape.matches; ++policy) {
      const std::string vrf = vrfName(policy);
      status_->devicePolicyListIs(deviceName(policy / 2))->netVrfNameByVrfIs(vrf, "net-" + vrf);
    }
    return fillSource<VelaL3::VelaMatchConfig>(
        *v1_, shape, [](std::uint32_t number) { return VelaL3::VelaPriority(number); });
  }

  Brix::Ptr<VelaL3::VelaPolicySourceConfig> v1_ =
      VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Brix::Ptr<VelaL3V2::VelaPolicySourceConfig> v2_ =
      VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Brix::Ptr<VelaPolicyMonitor::Status> status_ = VelaPolicyMonitor::Status::StatusIs();
  std::vector<VelaL3::VelaMatchConfig*> matches_;
  Brix::Ptr<VelaPolicyMonitor::PolicyTranslateRootSm> root_;
};

/// While this lives, all machines trace to a ring in memory.
class Tracing {
 public:
  Tracing() { Lumo::defaultHandleIs(&ring()); }
  Tracing(const Tracing&) = delete;
  Tracing& operator=(const Tracing&) = delete;
  ~Tracing() { Lumo::defaultHandleIs(nullptr); }

 private:
  static Lumo::TraceFile& ring() {
    static std::string why;
    static const auto made = Lumo::TraceFile::inMemory(std::size_t{1} << 20U, 8, why);
    return *made;
  }
};

/// The library as it runs in production: the binary trace is on.
class TracedLibrary : public Library {
 public:
  using Library::Library;
  using WhileMeasured = Tracing;
};

/// The same by hand: a recursive copy, then every change made twice.
template <class Kit>
class ByHand {
 public:
  struct WhileMeasured {};

  explicit ByHand(const Shape& shape)
      : matches_(fillSource<Match>(v1_, shape, [](std::uint32_t number) { return number; })) {}

  void mirror() {
    v2_ = std::make_unique<Floor::Source<Kit>>();
    v2_->copyFrom(v1_);
  }
  /// No part of the copy: where the changes below find what they follow.
  void link() {
    for (std::uint32_t number = 0; number != matches_.size(); ++number) {
      const std::uint32_t policy = number / 10'000;
      copies_.push_back(v2_->policySetIs(deviceName(policy / 2))
                            ->policyIs(L3::VrfName("net-" + vrfName(policy)))
                            ->ruleIs(20'000 + number % 10'000 / 2)
                            ->originIs(number % 2 == 0 ? "web" : "telemetry")
                            ->matchIs());
    }
  }
  void drop() {
    copies_.clear();
    v2_ = nullptr;
  }

  std::size_t size() const { return matches_.size(); }
  void insert(std::uint32_t match, const Prefix& key) {
    auto& set = matches_[match]->dstIp();
    if (set.insert(key)) {
      follow(match, key);
    }
  }
  void erase(std::uint32_t match, const Prefix& key) {
    auto& set = matches_[match]->dstIp();
    if (set.erase(key)) {
      follow(match, key);
    }
  }
  void endOfBurst() {}
  bool mirrored(std::uint32_t match, const Prefix& key) const {
    return matches_[match]->dstIp().contains(key) && copies_[match]->dstIp().contains(key);
  }

 private:
  using Match = Floor::Match<Kit>;

  void follow(std::uint32_t match, const Prefix& key) {
    if (matches_[match]->dstIp().contains(key)) {
      copies_[match]->dstIp().insert(key);
    } else {
      copies_[match]->dstIp().erase(key);
    }
  }

  Floor::Source<Kit> v1_;
  std::unique_ptr<Floor::Source<Kit>> v2_;
  std::vector<Match*> matches_;
  std::vector<Match*> copies_;
};

/// A tree of about so many entries that is mirrored, made at its first use and kept.
template <class Side>
Side& mirroredTree(std::uint32_t entries) {
  static std::map<std::uint32_t, std::unique_ptr<Side>> all;
  std::unique_ptr<Side>& tree = all[entries];
  if (tree == nullptr) {
    tree = std::make_unique<Side>(Shape::ofEntries(entries));
    tree->mirror();
    tree->link();
  }
  return *tree;
}

/// Calls `add(who, side)` for each side, which is given as a null pointer.
template <class Add>
void forEachSide(Add add) {
  add("ours", static_cast<Library*>(nullptr));
  add("ours, ring on", static_cast<TracedLibrary*>(nullptr));
  add("floor", static_cast<ByHand<Lean>*>(nullptr));
  add("std", static_cast<ByHand<Std>*>(nullptr));
#ifdef BENCH_ABSL
  add("absl", static_cast<ByHand<Absl>*>(nullptr));
#endif
}

inline benchmark::internal::Benchmark* addCase(const std::string& name,
                                               void (*run)(benchmark::State&)) {
  return benchmark::RegisterBenchmark(name.c_str(), run);
}

}  // namespace Bench
