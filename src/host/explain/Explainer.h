#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "data/TreePath.h"
#include "explain/Explanation.h"
#include "translation/History.h"
#include "translation/ServingRecord.h"

namespace Host {

/// Finds out why something is in version 2, or is not: goes along the path of one entry from the
/// device down, in both generations and among the state machines at once, and notes what is there
/// and what is missing. Other than an audit it looks at nothing beside the way, and it asks the
/// machines themselves.
class Explainer {
 public:
  Explainer(const Trees& trees, const Translation& translation, const History& history)
      : trees_(trees), translation_(translation), history_(history) {}

  /// Why nothing can be explained at this path; empty when something can.
  static std::string whyNot(const TreePath& path);
  /// `path` is of either generation. To be called once.
  Explanation explain(const TreePath& path);

 private:
  using Object = Kel::PtrInterface;
  static constexpr std::size_t kDevice = 1;
  static constexpr std::size_t kVrf = 2;

  // Before the walk: the same way in both generations, as far as it is known.
  void ways(const TreePath& path);
  OwnedValue keyInVersion2(const OwnedStep& vrf1) const;
  OwnedValue keyInVersion1(const OwnedStep& vrf2) const;
  std::string netVrfNameOf(const std::string& vrf) const;
  std::vector<std::string> vrfsCalled(const std::string& netVrfName) const;

  // The steps of the walk: each looks something up, and notes what it has found.
  void tree();
  void version1(const OwnedStep& step);
  void record();
  void mapping();
  void owner();
  void machine(const OwnedStep& step1, const Object* object2);
  void version2(const OwnedStep& step, const OwnedStep* step1, const Object* parent1);
  void stamp();
  void conclude();

  std::string faultOf(const Object& machine, const Object* object2) const;
  const Object* deviceMachine() const;
  std::string vrfOfMachineFor(const std::string& netVrfName) const;
  std::string proposal(const std::string& vrf) const;
  std::optional<std::string> wantedText(const OwnedStep& leaf2, const OwnedStep* step1,
                                        const Object* parent1) const;
  std::string recordPath(const std::string& vrf = {}) const;
  std::string path1To(const OwnedStep& step) const { return pathTo(way1_, step); }
  std::string path2To(const OwnedStep& step) const { return pathTo(way2_, step); }
  static std::string pathTo(const TreePath& way, const OwnedStep& step);
  const History::Tree& past() const {
    return policies_ ? history_.policies() : history_.serviceDevices();
  }
  /// A step; when it is not found, why, and a change line that helps.
  void add(Explanation::Step step, const std::string& why = {}, std::string remedy = {});

  const Trees& trees_;
  const Translation& translation_;
  const History& history_;

  Explanation explanation_;
  bool policies_ = false;  // the tree is that of the policies
  TreePath way1_;          // as far as there can be something
  TreePath way2_;
  std::string device_;
  std::optional<ServingRecord> served_;
  const Object* object1_ = nullptr;  // where the walk is; null: nothing is there
  const Object* object2_ = nullptr;
  const Object* machine_ = nullptr;
  std::size_t levels_ = 0;           // steps of the way that was asked for
  std::size_t found2_ = 1;           // steps of way2_ that were found; the container always is
  const Node* lackedIn1_ = nullptr;  // the first of way1_ that version 1 does not have
  std::string because_;              // how the VRF is called
  bool isProposal_ = false;          // the remedy has a name that is made up
};

}  // namespace Host
