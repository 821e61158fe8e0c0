#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "data/Datum.h"

namespace Host {

/// What a value is put to, and the value: the last step's datum.
struct Edit {
  TreePath path;
  Datum value;
};

enum class Verb : std::uint8_t { start, stop, suspend, resume, cleanup, initialize };

/// One change line, read and checked: a burst of changes of version 1 and of the monitor.
struct Change {
  /// What is asked for once the line has been applied.
  struct Show {
    bool v2 = false;
    bool status = false;
    bool audit = false;
    bool stats = false;

    bool any() const { return v2 || status || audit || stats; }
  };

  std::optional<Kel::Seconds> time;
  std::vector<TreePath> deletes;
  std::vector<Edit> replaces;
  std::vector<Edit> updates;
  std::vector<TreePath> notifies;
  std::optional<Verb> control;
  bool policies = true;        ///< `control` is for the policy tree
  bool serviceDevices = true;  ///< `control` is for the service-device tree
  bool signal = true;
  Show show;
};

}  // namespace Host
