#include "agent/TrialRun.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>

#include "Kel/TextTrace.h"
#include "agent/Reach.h"
#include "audit/SubtreeAudit.h"
#include "explain/Explainer.h"
#include "observe/Observation.h"
#include "text/Concat.h"
#include "text/JsonWriter.h"
#include "translation/ServingRecord.h"

namespace Host {
namespace {

/// No more warnings than these are said of one line.
constexpr std::size_t kMostWarnings = 20;

/// Keeps what it is told, as JSON.
class Events : public EventReceiver {
 public:
  Events() : json_(sink_, Layout::compact) { json_.openArray(); }

  void event(const Event& event) override {
    json_.openObject();
    writeMembers(json_, event);
    json_.closeObject();
  }
  std::string end() {
    json_.closeArray();
    json_.endLine();
    return sink_.text();
  }

 private:
  TextSink sink_;
  JsonWriter json_;
};

/// What there is to say against the state of some devices, each with the path that it is about.
class Doubts {
 public:
  Doubts(const Engine& engine, const Reach& reach) : engine_(engine) {
    for (const Difference& each :
         engine.session().audit(reach.isEverything() ? nullptr : &reach.devices())) {
      paths_.insert(each.path);
      texts_.push_back(concat({each.path, ": ", each.why}));
    }
    for (const std::string& device : reach.devices()) {
      machine("vela-l3:policy-source", device);
      machine("vela-l3:service-device-source", device);
    }
  }
  const std::vector<std::string>& texts() const { return texts_; }

 private:
  /// What the trees do not show, only the state machine of a device: which record it follows.
  void machine(std::string_view container, const std::string& device) {
    const Node& top = *Schema::instance().top(container);
    const Node& list = *top.children.front();
    const Kel::String name(device);
    if (list.row->find(top.top->root(engine_.trees()), &name) == nullptr) {
      return;
    }
    const Session& session = engine_.session();
    const Explanation found = Explainer(engine_.trees(), session.translation(), session.history())
                                  .explain({{&top}, {&list, copyOf(list.row->key(), &name)}});
    if (!found.missing.empty() && !paths_.contains(found.path) &&
        !paths_.contains(found.steps.back().path)) {
      texts_.push_back(concat({found.path, ": ", found.missing}));
    }
  }

  const Engine& engine_;
  std::set<std::string> paths_;
  std::vector<std::string> texts_;
};

/// The VRFs that some devices have in version 1, each with its entry in version 2 (empty: none).
using Places = std::map<std::string, std::string>;

Places placesOf(const Trees& trees, const Reach& reach) {
  Places places;
  for (const bool policies : {true, false}) {
    const std::string container = policies ? ":policy-source" : ":service-device-source";
    const Node& top1 = *Schema::instance().top("vela-l3" + container);
    const Node& top2 = *Schema::instance().top("vela-l3v2" + container);
    const auto vrfsOf = [&](const Node& top, const std::string& device) {
      const Node& devices = *top.children.front();
      const auto all = SubtreeAudit::entriesOf(devices, top.top->root(trees));
      const auto vrfs = std::ranges::find(devices.children, Node::Kind::list, &Node::kind);
      const Kel::PtrInterface* const entry = SubtreeAudit::lookUp(all, device);
      return entry == nullptr ? SubtreeAudit::Entries() : SubtreeAudit::entriesOf(**vrfs, *entry);
    };
    for (const std::string& device : reach.devices()) {
      const ServingRecord served(trees, device);
      const auto vrfs2 = vrfsOf(top2, device);
      for (const auto& [vrf, entry] : vrfsOf(top1, device)) {
        const std::string name =
            served.record == nullptr
                ? ""
                : Kel::textOf(served.record->netVrfNameByVrf(Kel::String(vrf)));
        places[concat({"device \"", device, "\": ", policies ? "the policy of VRF \"" : "VRF \"",
                       vrf, "\""})] = vrfs2.contains(name) ? name : "";
      }
    }
  }
  return places;
}

std::vector<std::string> warningsOf(const Places& before, const Places& after, const Doubts& doubts,
                                    const std::set<std::string>& had, bool signals) {
  std::vector<std::string> texts;
  for (const auto& [vrf, name] : before) {
    const auto at = after.find(vrf);
    if (!name.empty() && at != after.end() && at->second.empty()) {
      texts.push_back(concat({vrf, " would lose \"", name, "\", its entry in version 2"}));
    }
  }
  for (const std::string& text : doubts.texts()) {
    // A burst that is not to be signalled yet is what the line asks for.
    const bool asked = !signals && text.find("]/timestamp: ") != std::string::npos;
    if (!asked && !had.contains(text)) {
      texts.push_back(text);
    }
  }
  if (texts.size() > kMostWarnings) {
    const std::size_t more = texts.size() - kMostWarnings;
    texts.resize(kMostWarnings);
    texts.push_back(concat({"and ", std::to_string(more), " more"}));
  }
  return texts;
}

}  // namespace

std::string tryOut(Engine& engine, const Change& change) {
  Kel::TextTrace::facility("VelaPolicyMonitor").levelsAre(0);
  engine.dropLedgers();
  const Trees& trees = engine.trees();
  const Reach reach(trees, change);
  const Places before = placesOf(trees, reach);
  const Doubts doubts(engine, reach);
  const std::set<std::string> had(doubts.texts().begin(), doubts.texts().end());
  Events events;
  std::vector<std::unique_ptr<Observation>> observations;
  for (const TreePath& path : reach.written()) {
    observations.push_back(std::make_unique<Observation>(trees, path));
    observations.back()->add(events);
  }
  const std::optional<std::string> error = engine.apply(change);
  observations.clear();

  TextSink sink;
  sink.write(events.end());
  JsonWriter json(sink, Layout::compact);
  json.openArray();
  for (const std::string& text :
       warningsOf(before, placesOf(trees, reach), Doubts(engine, reach), had, change.signal)) {
    json.text(text);
  }
  json.closeArray();
  json.endLine();
  if (error) {
    json.text(*error);
  } else {
    json.spelled("null");
  }
  json.endLine();
  return sink.text();
}

}  // namespace Host
