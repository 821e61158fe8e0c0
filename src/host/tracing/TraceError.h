#pragma once

#include <stdexcept>

namespace Host {

/// There is no trace where one was said to be, or it does not look like one.
class TraceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace Host
