#include "agent/Agent.h"

#include <algorithm>
#include <optional>

#include "agent/Clients.h"
#include "agent/DocumentWatch.h"
#include "agent/Notify.h"
#include "agent/Service.h"
#include "agent/Signals.h"
#include "protocol/SocketPath.h"
#include "session/Answers.h"
#include "text/Concat.h"
#include "text/ExitCode.h"
#include "text/OutputFile.h"
#include "tracing/Tracing.h"

namespace Host {
namespace {

/// One agent at work, from the moment that its documents are loaded.
class Run {
 public:
  Run(const Listener& listener, Signals& signals, Documents& documents, Engine& engine)
      : signals_(signals),
        documents_(documents),
        engine_(engine),
        clients_(listener, loop_),
        service_(engine, clients_, documents) {
    signals_.follow(loop_);
  }

  void watchDocuments() {
    watch_.emplace(documents_.files(), loop_);
    if (documents_.haveChanged()) {  // before they were watched
      documents_.readAgain(engine_);
    }
  }

  /// Answers and waits until somebody asks the agent to stop: who.
  const char* serve() {
    while (signals_.stop() == nullptr && !service_.isOver()) {
      loop_.turn(clients_.isBusy() ? std::chrono::milliseconds(0) : service_.patience());
      clients_.work(service_);
      const bool asked = signals_.takeReload();
      if ((watch_ && watch_->takeSaved()) || asked) {
        documents_.readAgain(engine_);
      }
      service_.look();
      clients_.send(service_);
    }
    return service_.isOver() ? "a client" : signals_.stop();
  }

  void farewell() { clients_.farewell(); }

 private:
  Loop loop_;
  Signals& signals_;
  Documents& documents_;
  Engine& engine_;
  Clients clients_;
  Service service_;
  std::optional<DocumentWatch> watch_;
};

std::string wrongWithRequest(const AgentRequest& request) {
  if (std::ranges::find(request.configs, "-") != request.configs.end()) {
    return "an agent reads its documents again when it is told to; give it files and no \"-\"";
  }
  return request.watch && request.configs.empty()
             ? "--watch follows documents; name them with --config"
             : "";
}

}  // namespace

int agent(const AgentRequest& request, const RunOptions& options, const Console& console) {
  Signals signals;
  Diary diary(console.err);
  Report report(console.err, options.color);
  if (const std::string why = wrongWithRequest(request); !why.empty()) {
    report.problem("vpm", why);
    return kWrongInput;
  }
  Progress progress(console.err, options.progress);
  Documents documents(request.configs, diary);
  const Trees trees;
  if (!documents.read(trees, report, progress)) {
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

  Run run(listener, signals, documents, engine);
  if (request.watch) {
    run.watchDocuments();
  }
  diary.say({"listening on ", listener.path()});
  notifyManager("READY=1");
  const char* const who = run.serve();
  notifyManager("STOPPING=1");
  run.farewell();
  diary.say({"stopped by ", who});
  trace.reset();  // how the trees are taken down is no part of what the agent did
  if (file) {
    Answers(*file, trees, engine.session()).end();
    file->commit();
  }
  return kDone;
}

}  // namespace Host
