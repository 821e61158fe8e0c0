#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>

#include "change/Change.h"
#include "data/Touched.h"
#include "translation/Translation.h"

namespace Host {

/// What an audit has to know of the past: the trees alone do not show why they differ.
///
/// Some differences are there because of what happened, and stay until something is announced
/// again: an entry of version 2 goes with the first of two VRFs that have shared its name; what
/// changes while a tree is suspended is not made up for; a record that comes or goes is noticed
/// when its device is announced the next time.
class History {
 public:
  /// What one tree has been through since it was last built from scratch.
  struct Tree {
    bool missed = false;   ///< something was changed while it was suspended
    bool raised = false;   ///< a handler raised an error, and may have left its work undone
    bool cleaned = false;  ///< cleaned up, and not initialized since
  };

  /// Notes how the monitor's records map VRFs at the start.
  explicit History(const Trees& trees);

  /// A line was applied, up to its `control`. `raised`: a handler has raised an error.
  void changed(const Touched& touched, const Change& change, const Translation& translation,
               bool raised);
  void controlled(Tree& tree, Verb verb);

  Tree& policies() { return policies_; }
  Tree& serviceDevices() { return serviceDevices_; }
  const Tree& policies() const { return policies_; }
  const Tree& serviceDevices() const { return serviceDevices_; }

  /// Whether this record has mapped two VRFs to this name, at once or one after the other.
  bool wasShared(const std::string& record, const std::string& netVrfName) const;
  /// Whether this record came or went.
  bool cameOrWent(const std::string& record) const { return records_.contains(record); }
  /// Whether this policy or VRF was changed and its end of burst has not been signalled.
  bool isUnsignalled(const TreePath& entry) const { return unsignalled_.contains(entry); }

 private:
  void mapped(const std::string& record, const std::string& vrf, const std::string& netVrfName);

  Tree policies_;
  Tree serviceDevices_;
  // By record and network VRF name, the VRFs that have had it.
  std::map<std::pair<std::string, std::string>, std::set<std::string>> vrfs_;
  std::set<std::string> records_;
  std::set<TreePath, Touched::Below> unsignalled_;
};

}  // namespace Host
