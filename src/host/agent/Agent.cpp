#include "agent/Agent.h"

#include <malloc.h>

#include "agent/AgentRun.h"
#include "text/ExitCode.h"

namespace Host {
namespace {

/// What a slow client has made the agent hold goes back to the system with the client. Left alone,
/// the allocator takes large blocks that come and go for its own.
void giveMemoryBack() {
  constexpr int kLarge = 1 << 18;
  ::mallopt(M_MMAP_THRESHOLD, kLarge);
  ::mallopt(M_TRIM_THRESHOLD, kLarge);
}

}  // namespace

int agent(const AgentRequest& request, const RunOptions& options, const Console& console) {
  giveMemoryBack();
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
