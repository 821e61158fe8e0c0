#pragma once

#include <limits>
#include <string>
#include <vector>

#include "Kel/TextTrace.h"
#include "Lumo/Records.h"
#include "Pario/Scope.h"
#include "tracing/TraceMetadata.h"

namespace Host {

/// Which records of a trace are wanted: those that fit every member that says anything.
struct TraceFilter {
  Kel::TextTrace::Levels levels = Kel::TextTrace::kAllLevels;
  Pario::Scope scope;                ///< of device, VRF, rule and handler
  std::vector<std::string> classes;  ///< one of these, with or without the namespace
  Kel::Seconds from = -std::numeric_limits<Kel::Seconds>::infinity();  ///< printed times
  Kel::Seconds to = std::numeric_limits<Kel::Seconds>::infinity();
  std::string text;  ///< part of the line

  bool takes(const Lumo::Record& record, const TraceSite& site) const;
};

}  // namespace Host
