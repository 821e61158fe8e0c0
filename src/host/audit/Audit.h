#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "audit/SubtreeAudit.h"
#include "translation/History.h"
#include "translation/ServingRecord.h"

namespace Host {

/// Compares version 1 and version 2, and says of each difference why it is there.
///
/// It reads both trees and the monitor's records and asks no state machine what it has done; what
/// the trees cannot show it takes from the history of the session. The upper two levels of a tree,
/// devices and VRFs, are named differently on both sides and are matched here; what is below a VRF
/// is matched by name (SubtreeAudit).
///
/// Each difference has a class:
/// - *pending*: it goes when something else happens: a record, a mapping, a signal, an
/// announcement,
///   a start.
/// - *as designed*: it stays, and is known to.
/// - *foreign*: version 2 has something that nothing in version 1 stands for.
/// - *defect*: version 2 should be different.
class Audit {
 public:
  /// The states are those of the policy tree and of the service-device tree.
  Audit(const Trees& trees, const History& history, const Translation::State& policies,
        const Translation::State& serviceDevices)
      : trees_(trees), history_(history), policies_(policies), serviceDevices_(serviceDevices) {}

  /// The differences, in the order of the trees and of their keys.
  /// `only`: of these devices alone; null: of all.
  std::vector<Difference> run(const std::set<std::string>* only = nullptr);

 private:
  /// One of the two trees, as it is compared now.
  struct Side {
    const Node* top1;
    const Node* top2;
    const Node* devices1;
    const Node* devices2;
    const Node* vrfs1;
    const Node* vrfs2;
    bool policies;
  };

  bool isAskedFor(const std::string& device) const {
    return only_ == nullptr || only_->contains(device);
  }
  void tree(const Side& side, const Translation::State& state, const History::Tree& past);
  void device(const Side& side, const Kel::PtrInterface& device1, const Kel::PtrInterface* device2);
  void vrfs(const Side& side, const ServingRecord& served, const Kel::PtrInterface& device1,
            const Kel::PtrInterface& device2);
  void vrf(const Side& side, const std::string& recordName, const std::string& netVrfName,
           const Kel::PtrInterface& vrf1, const Kel::PtrInterface* vrf2);
  void timestamps(const Side& side, const Kel::PtrInterface& vrf1, const Kel::PtrInterface& vrf2);
  bool isBindingUnsure(const Side& side, const ServingRecord& served,
                       const std::string& device) const;

  const Trees& trees_;
  const History& history_;
  const Translation::State policies_;
  const Translation::State serviceDevices_;
  const std::set<std::string>* only_ = nullptr;
  SubtreeAudit found_;
};

}  // namespace Host
