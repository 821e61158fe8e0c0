#include "agent/Agent.h"

#include <optional>
#include <ostream>

#include "agent/Clients.h"
#include "agent/Engine.h"
#include "agent/Notify.h"
#include "agent/Service.h"
#include "agent/Signals.h"
#include "document/Configuration.h"
#include "protocol/SocketPath.h"
#include "session/Answers.h"
#include "text/Concat.h"
#include "text/ExitCode.h"
#include "text/OutputFile.h"
#include "tracing/Tracing.h"

namespace Host {
namespace {

/// Tells the people behind the agent what happens, in one line.
class Diary {
 public:
  explicit Diary(std::ostream& err) : err_(err) {}
  void say(std::initializer_list<std::string_view> parts) {
    err_ << "vpm: " << printable(concat(parts)) << std::endl;
  }

 private:
  std::ostream& err_;
};

std::string counted(std::size_t count, std::string_view what) {
  return concat({std::to_string(count), " ", what, count == 1 ? "" : "s"});
}

/// Answers and waits until somebody asks the agent to stop: who.
const char* serve(Loop& loop, const Signals& signals, Service& service, Clients& clients) {
  while (signals.stop() == nullptr && !service.isOver()) {
    loop.turn(clients.isBusy() ? std::chrono::milliseconds(0) : service.patience());
    clients.work(service);
    service.look();
    clients.send(service);
  }
  return service.isOver() ? "a client" : signals.stop();
}

}  // namespace

int agent(const AgentRequest& request, const RunOptions& options, const Console& console) {
  Signals signals;
  Diary diary(console.err);
  Report report(console.err, options.color);
  Progress progress(console.err, options.progress);
  const Trees trees;
  if (!readConfiguration(request.configs, trees, report, progress)) {
    report.sum("the agent was not started");
    return kWrongInput;
  }
  progress.begin("translating", 0);
  const Listener listener(socketPath(request.listen));
  std::optional<OutputFile> file;
  if (!options.output.empty()) {
    file.emplace(options.output);
  }
  std::optional<Tracing> trace(options);
  Engine engine(trees);
  engine.start();
  progress.end();
  diary.say({"loaded ", counted(request.configs.size(), "document"), ": ",
             counted(trees.policyV1->policySet().size(), "policy set"), ", ",
             counted(trees.serviceDeviceV1->serviceDevice().size(), "service device"), ", ",
             counted(trees.status->devicePolicyList().size(), "monitor record")});

  Loop loop;
  signals.follow(loop);
  Clients clients(listener, loop);
  Service service(engine, clients);
  diary.say({"listening on ", listener.path()});
  notifyManager("READY=1");
  const char* const who = serve(loop, signals, service, clients);
  notifyManager("STOPPING=1");
  clients.farewell();
  diary.say({"stopped by ", who});
  trace.reset();  // how the trees are taken down is no part of what the agent did
  if (file) {
    Answers(*file, trees, engine.session()).end();
    file->commit();
  }
  return kDone;
}

}  // namespace Host
