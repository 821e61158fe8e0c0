#include "agent/Agent.h"

#include "agent/AgentRun.h"
#include "text/ExitCode.h"

namespace Host {

int agent(const AgentRequest& request, const RunOptions& options, const Console& console) {
  AgentRun run(request, options, console);
  if (!run.load()) {
    return kWrongInput;
  }
  run.start();
  run.serve();
  run.end();
  return kDone;
}

}  // namespace Host
