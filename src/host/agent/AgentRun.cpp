#include "agent/AgentRun.h"

#include <algorithm>

#include "agent/Notify.h"
#include "protocol/SocketPath.h"
#include "session/Answers.h"
#include "text/Concat.h"

namespace Host {
namespace {

std::string whyNot(const AgentRequest& request) {
  if (std::ranges::find(request.configs, "-") != request.configs.end()) {
    return "an agent reads its documents again when it is told to; give it files and no \"-\"";
  }
  return request.watch && request.configs.empty()
             ? "--watch follows documents; name them with --config"
             : "";
}

}  // namespace

AgentRun::AgentRun(const AgentRequest& request, const RunOptions& options, const Console& console)
    : request_(request),
      options_(options),
      diary_(console.err),
      report_(console.err, options.color),
      progress_(console.err, options.progress),
      documents_(request.configs, diary_) {}

bool AgentRun::load() {
  if (const std::string why = whyNot(request_); !why.empty()) {
    progress_.end();
    report_.problem("vpm", why);
    return false;
  }
  if (!request_.state.empty()) {
    state_.emplace(request_.state, [this](const std::string& message) { diary_.say({message}); });
  }
  if (state_ && state_->hasState()) {
    said_.emplace();
  }
  if (!documents_.read(said_ ? *said_ : trees_, report_, progress_)) {
    report_.sum("the agent was not started");
    return false;
  }
  if (said_) {
    progress_.begin("loading the state", 0);
    state_->load(trees_);
  }
  return true;
}

void AgentRun::start() {
  listener_.emplace(socketPath(request_.listen));
  if (!options_.output.empty()) {
    output_.emplace(options_.output);
  }
  if (state_ && !said_) {
    state_->create(trees_);
    state_->documentsAre(trees_);
  }
  trace_.emplace(options_);
  progress_.begin("translating", 0);
  engine_.emplace(trees_);
  engine_->start();
  progress_.end();
  diary_.say({"loaded ", said_ ? "the state in " : "",
              said_ ? request_.state : counted(request_.configs.size(), "document"), ": ",
              counted(trees_.policyV1->policySet().size(), "policy set"), ", ",
              counted(trees_.serviceDeviceV1->serviceDevice().size(), "service device"), ", ",
              counted(trees_.status->devicePolicyList().size(), "monitor record")});
  if (state_) {
    engine_->addLedger(*state_);  // first of all: what it refuses is no business of the others
  }
  record();
  if (state_) {
    goOn();
  }
  signals_.follow(loop_);
  clients_.emplace(*listener_, loop_);
  service_.emplace(*engine_, *clients_, documents_, loop_,
                   TraceSettings(*trace_, options_.traceOnly));
  if (request_.watch) {
    watch();
  }
  diary_.say({"listening on ", listener_->path()});
  notifyManager("READY=1");
}

/// What the documents say is kept in the state from here on; what was edited since the last run is
/// made up for.
void AgentRun::goOn() {
  documents_.keeperIs([this](const Trees& documents) {
    if (const auto why = sync()) {
      throw OutputError(*why);
    }
    state_->documentsAre(documents);
  });
  if (said_) {
    const Trees before;
    state_->loadDocuments(before);
    documents_.apply(before, *said_, *engine_);
    said_.reset();
  }
}

void AgentRun::watch() {
  watch_.emplace(documents_.files(), loop_);
  if (documents_.haveChanged()) {  // before they were watched
    documents_.readAgain(*engine_);
  }
}

void AgentRun::record() {
  if (request_.record.empty()) {
    return;
  }
  recording_.emplace(request_.record, [this](const std::string& why) { diary_.say({why}); });
  engine_->addLedger(*recording_);
  std::string started;
  Kel::appendValue(started, engine_->time());
  const std::string again =
      concat({"; \"vpm replay --time ", started, "\" on the same documents makes the same of it"});
  diary_.say({"recording to ", request_.record, said_ ? "" : again});
}

void AgentRun::serve() {
  while (signals_.stop() == nullptr && !service_->isOver()) {
    turn();
  }
  notifyManager("STOPPING=1");
}

void AgentRun::turn() {
  loop_.turn(clients_->isBusy() ? std::chrono::milliseconds(0) : patience());
  clients_->work(*service_);
  const bool asked = signals_.takeReload();
  if ((watch_ && watch_->takeSaved()) || asked) {
    documents_.readAgain(*engine_);
  }
  keep();
  tellOfTrace();
  service_->look();
  clients_->send(*service_);
}

/// Puts on disk what this turn has applied, before anybody is told of it.
void AgentRun::keep() {
  if (const auto why = sync()) {
    service_->acknowledgements().takeBack(*why);
  }
  service_->acknowledgements().good();
  notOnDisk_.reset();
  if (state_) {
    state_->tend(trees_);
  }
}

/// Why something that was applied in this turn may not be on disk; none: it is.
std::optional<std::string> AgentRun::sync() {
  if (auto why = state_ ? state_->sync() : std::nullopt) {
    notOnDisk_ = std::move(why);
  }
  return notOnDisk_;
}

/// A text trace that loses lines is no reason to end, and is told of once.
void AgentRun::tellOfTrace() {
  if (!traceTold_) {
    if (const std::string why = trace_->whyNotWhole(); !why.empty()) {
      diary_.say({why});
      traceTold_ = true;
    }
  }
}

std::optional<std::chrono::milliseconds> AgentRun::patience() const {
  const auto ofService = service_->patience();
  const auto ofState = state_ ? state_->patience() : std::nullopt;
  return ofService && ofState ? std::min(*ofService, *ofState) : ofService ? ofService : ofState;
}

void AgentRun::end() {
  clients_->farewell(*service_);
  if (state_) {
    state_->end(trees_);
  }
  diary_.say({"stopped by ", service_->isOver() ? "a client" : signals_.stop()});
  trace_->end();  // how the trees are taken down is no part of what the agent did
  if (output_) {
    Answers(*output_, trees_, engine_->session()).end();
    output_->commit();
  }
}

}  // namespace Host
