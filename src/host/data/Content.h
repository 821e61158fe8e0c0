#pragma once

#include <cstdint>

namespace Host {

/// What a document is to hold.
enum class Content : std::uint8_t {
  configuration,  ///< version 1 and the monitor; the flags of the translation are ignored
  everything,     ///< that, the flags of the translation, and version 2
  leftOver,       ///< version 2 as a run has printed it; the rest of what it printed is ignored
};

}  // namespace Host
