#pragma once

#include <tuple>

#include "common/TracePlace.h"
#include "common/TranslateSm.h"

namespace CommonTests {

/// A state machine that watches nothing and owns nothing.
struct IdleMachine : VelaPolicyMonitor::TranslateSm {
  IdleMachine() { start(*this); }
  static std::tuple<> parts() { return {}; }
  static void handleInitialized() {}
  const VelaPolicyMonitor::TracePlace& tracePlace() const { return place; }
  Kel::FwkType fwkType() const noexcept override { return {}; }
  void tearDown() noexcept override {}

  VelaPolicyMonitor::TracePlace place;
};

}  // namespace CommonTests
