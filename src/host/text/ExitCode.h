#pragma once

namespace Host {

/// What the program answers to whoever called it.
enum ExitCode : int {
  kDone = 0,
  kDifferent = 1,   ///< done, but a difference was found or a change raised an error
  kWrongInput = 2,  ///< the input or the command line is wrong; nothing was printed or applied
  kFailed = 3,      ///< a file or the machine failed
};

}  // namespace Host
