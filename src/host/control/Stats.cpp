#include "control/Stats.h"

#include "control/AgentAnswer.h"
#include "control/JsonCopy.h"
#include "control/Prometheus.h"
#include "control/RequestLine.h"
#include "control/StatsTables.h"
#include "text/ExitCode.h"

namespace Host {

int stats(const StatsRequest& request, const RunOptions& /*options*/, const Console& console) {
  Requests agent(request.socket);
  const auto found = objectIn(agent.ask(RequestLine("stats").done()).members, "stats");
  if (request.json) {
    JsonWriter json(console.out, Layout::pretty);
    copyObject(json, found);
  } else {
    console.out.write(request.prometheus ? prometheusText(found) : statsTables(found));
  }
  return kDone;
}

}  // namespace Host
