#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "audit/Difference.h"
#include "data/DataPath.h"

namespace Host {

/// The child of this name, which there is.
const Node& childOf(const Node& node, std::string_view name);
/// What is in a leaf of `object`, as text.
std::string leafText(const Node& leaf, const Kel::PtrInterface& object);

/// Compares two subtrees whose nodes have the same names, and collects the differences.
class SubtreeAudit {
 public:
  /// The entries of a list of entities by the text of their keys.
  using Entries = std::map<std::string, const Kel::PtrInterface*>;
  static Entries entriesOf(const Node& list, const Kel::PtrInterface& object);
  /// Null when there is none.
  static const Kel::PtrInterface* lookUp(const Entries& entries, const std::string& key) {
    const auto at = entries.find(key);
    return at == entries.end() ? nullptr : at->second;
  }

  /// Where the comparison is, on both sides.
  void enter(const Node& node1, const Kel::PtrInterface* object1, const Node& node2,
             const Kel::PtrInterface* object2);
  void leave();

  /// The members of both objects, which stand where the comparison is.
  void members(const Node& node1, const Kel::PtrInterface& object1, const Node& node2,
               const Kel::PtrInterface& object2);

  /// What is found from now on has this reason, whatever it looks like; empty: no more.
  void excuse(Difference::Kind kind, std::string why);
  void noExcuse() { excuse_.clear(); }
  bool hasExcuse() const { return !excuse_.empty(); }

  void at1(Difference::Kind kind, std::string why) { add(kind, std::move(why), steps1_); }
  void at2(Difference::Kind kind, std::string why) { add(kind, std::move(why), steps2_); }
  std::vector<Step>& steps1() { return steps1_; }
  std::vector<Step>& steps2() { return steps2_; }
  std::vector<Difference>& differences() { return differences_; }

 private:
  void leaf(const Node& leaf1, const Kel::PtrInterface& object1, const Node& leaf2,
            const Kel::PtrInterface& object2);
  void single(const Node& node1, const Kel::PtrInterface& object1, const Node& node2,
              const Kel::PtrInterface& object2);
  void entries(const Node& node1, const Kel::PtrInterface& object1, const Node& node2,
               const Kel::PtrInterface& object2);
  void keys(const Node& node1, const Kel::PtrInterface& object1, const Node& node2,
            const Kel::PtrInterface& object2);
  void add(Difference::Kind kind, std::string why, const std::vector<Step>& steps);

  std::vector<Step> steps1_;
  std::vector<Step> steps2_;
  std::string excuse_;
  Difference::Kind excuseKind_ = Difference::Kind::pending;
  std::vector<Difference> differences_;
};

}  // namespace Host
