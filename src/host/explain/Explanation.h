#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Kel/Text.h"

namespace Host {

class JsonWriter;

/// Why something is in version 2, or is not.
struct Explanation {
  /// Something that was looked up on the way.
  struct Step {
    std::string level;  ///< what was looked up: a node of the data tree, a state machine, ...
    std::string key;    ///< which one; empty: there is only one
    std::string path;   ///< where it was looked up; empty: it has no place in the data tree
    bool found;         ///< whether it was there, as it has to be
    std::string text;
  };

  std::string path;  ///< what was asked for
  bool inVersion2 = false;
  std::vector<Step> steps;  ///< from the device down
  std::string verdict;
  std::string missing;                  ///< the first thing that is; empty: nothing is
  std::string remedy;                   ///< a change line that helps; empty: there is none
  std::optional<Kel::Seconds> written;  ///< when the policy or VRF of version 2 was stamped last
};

/// Writes it as an object.
void write(JsonWriter& json, const Explanation& explanation);

}  // namespace Host
