#pragma once

#include <functional>

#include "model/reference/LibrarySide.h"

namespace Reference {

/// How a process ended that did `act` to a world of the library.
struct Ending {
  bool byItself = false;  ///< with abort(), as std::terminate() and assertions do
  Text log;               ///< of the world, up to then
  Text said;              ///< on standard error
};

/// Does `act` in a process of its own.
Ending endingOf(LibrarySide& library, const std::function<void()>& act);

}  // namespace Reference
