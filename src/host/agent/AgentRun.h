#pragma once

#include <optional>

#include "agent/Agent.h"
#include "agent/DocumentWatch.h"
#include "agent/Listener.h"
#include "agent/Service.h"
#include "agent/Signals.h"
#include "session/HandlerStatistics.h"
#include "state/Recording.h"
#include "state/StateFolder.h"
#include "text/OutputFile.h"
#include "tracing/Tracing.h"

namespace Host {

/// One run of an agent. The steps are taken in the order in which they stand here, once each.
class AgentRun {
 public:
  AgentRun(const AgentRequest& request, const RunOptions& options, const Console& console);

  /// Loads the documents and the state. False: something is wrong, and has been reported.
  bool load();
  /// Starts both trees and listens.
  void start();
  /// Answers and waits until somebody asks the agent to stop.
  void serve();
  /// Says goodbye to the clients, and writes down what is wanted of the end.
  void end();

 private:
  void goOn();
  void watch();
  void record();
  void turn();
  void keep();
  void tellOfTrace();
  std::optional<std::string> sync();
  std::optional<std::chrono::milliseconds> patience() const;

  const AgentRequest& request_;
  const RunOptions& options_;
  Signals signals_;
  Diary diary_;
  Report report_;
  Progress progress_;
  Documents documents_;
  Trees trees_;
  std::optional<Trees> said_;  // by the documents, when the trees are those of an earlier run
  std::optional<Listener> listener_;
  std::optional<OutputFile> output_;
  std::optional<StateFolder> state_;
  std::optional<std::string> notOnDisk_;
  std::optional<Recording> recording_;
  std::optional<Tracing> trace_;
  bool traceTold_ = false;
  const HandlerMeasurement measurement_;
  std::optional<Engine> engine_;
  Loop loop_;
  std::optional<Clients> clients_;
  std::optional<Service> service_;
  std::optional<DocumentWatch> watch_;
};

}  // namespace Host
