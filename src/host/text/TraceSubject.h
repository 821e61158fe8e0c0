#pragma once

#include <string>

namespace Host {

/// What a trace is about; empty members: everything.
struct TraceSubject {
  std::string device;
  std::string vrf;      ///< as version 1 calls it
  std::string rule;     ///< its priority
  std::string handler;  ///< "handleVrf"
};

}  // namespace Host
