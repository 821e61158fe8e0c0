#include "model/reference/Scratch.h"

#include <set>

#include "VelaL3/VelaL3.h"
#include "monitor/Status.h"

namespace Reference {
namespace {

using Content = std::map<Text, Text>;  // what version 2 holds, by path

void copy(const Kel::PtrInterface& from, Kel::PtrInterface& to);

// Copies one attribute.
void copyRow(const Kel::PtrInterface& from, Kel::PtrInterface& to, const Kel::Row& row) {
  struct Context {
    Kel::PtrInterface& to;
    const Kel::Row& row;
  } context{to, row};
  const auto put = [](void* place, const void* key, const void* value) {
    const Context& at = *static_cast<Context*>(place);
    void* const made = at.row.put(at.to, key, value);
    if (made != nullptr) {
      copy(*static_cast<const Kel::PtrInterface*>(value), *static_cast<Kel::PtrInterface*>(made));
    }
  };
  if (row.walk != nullptr) {
    row.walk(from, &context, put);
  } else if (row.kind == Kel::RowKind::value || row.kind == Kel::RowKind::single) {
    if (const void* const found = row.find(from, nullptr)) {
      put(&context, nullptr, found);
    }
  }
}

void copy(const Kel::PtrInterface& from, Kel::PtrInterface& to) {
  for (const Kel::Row& row : from.fwkType().descriptor().rows) {
    copyRow(from, to, row);
  }
}

void collect(Content& content, const Kel::PtrInterface& entity, const Text& path) {
  content[path] = "";
  for (const Kel::Row& row : entity.fwkType().descriptor().rows) {
    struct Context {
      Content& content;
      const Kel::Row& row;
      Text path;
    } context{content, row, path + "/" + row.name};
    if (row.walk != nullptr) {
      row.walk(entity, &context, [](void* place, const void* key, const void* value) {
        const Context& at = *static_cast<Context*>(place);
        Text below = at.path + "[";
        at.row.key().append(below, key);
        below += "]";
        if (at.row.kind == Kel::RowKind::set) {
          at.content[below] = "";
        } else {
          collect(at.content, *static_cast<const Kel::PtrInterface*>(value), below);
        }
      });
    } else if (const void* const found = row.find(entity, nullptr);
               found != nullptr && row.kind == Kel::RowKind::single) {
      collect(content, *static_cast<const Kel::PtrInterface*>(found), context.path);
    } else if (found != nullptr) {
      appendText(content[context.path], row.value(), found);
    }
  }
}

// The devices that the generator knows, and the records that may serve each.
const std::map<Text, std::vector<Text>> kRecordsOf = {
    {"fw1", {"fw1"}},
    {"fw2", {"fw2"}},
    {"fwA\\:fwB_HAPair", {"fwA::", "fwB::"}},
    {"fwA\\:fwB_HAPair:x\\:y:z:more", {"fwA:x\\:y:z", "fwB:x\\:y:z"}},
};

std::set<Text> keysOf(const Kel::PtrInterface& entity, Kel::AttrId id) {
  struct Context {
    const Kel::Row& row;
    std::set<Text> keys;
  } context{*entity.fwkType().descriptor().row(id), {}};
  context.row.walk(entity, &context, [](void* place, const void* key, const void* /*value*/) {
    Context& at = *static_cast<Context*>(place);
    Text text;
    at.row.key().append(text, key);
    at.keys.insert(text);
  });
  return context.keys;
}

/// What a world has been through that its present state does not tell.
class Past {
 public:
  explicit Past(const LibrarySide& world) : world_(world) {}

  /// To be told of each operation when it is done. Returns whether a record has come or gone.
  bool see(const Operation& done) {
    for (std::size_t tree = 0; tree != 2; ++tree) {
      const auto before = std::exchange(devices_[tree], keysOf(*world_.tops[tree], 258));
      for (const auto& [device, records] : kRecordsOf) {
        const bool told = done.at.from == (tree == 0 ? From::policyV1 : From::serviceV1) &&
                          done.at.steps.empty() && done.verb == Operation::Verb::notify &&
                          done.key == device;
        if (told || before.contains(device) != devices_[tree].contains(device)) {
          unseen_[tree].erase(device);
        }
      }
    }
    const auto before = std::exchange(records_, keysOf(*world_.tops[2], 257));
    for (const auto& [device, records] : kRecordsOf) {
      for (const Text& record : records) {
        if (before.contains(record) != records_.contains(record)) {
          unseen_[0].insert(device);
          unseen_[1].insert(device);
        }
        if (records_.contains(record) && sharesNames(record)) {
          shared_.insert(device);
        }
      }
    }
    return before != records_;
  }

  /// The record that serves a device has come, gone or become another one, and the device was not
  /// told of since: it is translated by what it knew then.
  bool recordIsUnseen(std::size_t tree, const Text& device) const {
    return unseen_[tree].contains(device);
  }
  /// Two VRFs of the device had one network VRF name at some time: who of them writes there, and
  /// whose removal takes it away, depends on the order in which things happened.
  bool namesWereShared(const Text& device) const { return shared_.contains(device); }

 private:
  bool sharesNames(const Text& record) const {
    const auto& status = static_cast<const VelaPolicyMonitor::Status&>(*world_.tops[2]);
    std::set<Text> names;
    const auto list = status.devicePolicyList(Kel::String(record));
    for (const auto& [vrf, name] : list->netVrfNameByVrf()) {
      if (!name.empty() && !names.insert(Text(name)).second) {
        return true;
      }
    }
    return false;
  }

  const LibrarySide& world_;
  std::set<Text> devices_[2];
  std::set<Text> records_;
  std::set<Text> unseen_[2];
  std::set<Text> shared_;
};

/// A version-2 time tells when a burst last changed what is below, and that was another time.
bool stampedAtAnotherTime(const Text& path) { return path.ends_with("/timestamp"); }

/// A match that has gone from version 1 stays in version 2 until its origin goes.
bool matchStays(const LibrarySide& world, const Text& device, const Text& path) {
  const auto& source = static_cast<const VelaL3::VelaPolicySourceConfig&>(*world.tops[0]);
  const auto policySet = source.policySet(Kel::String(device));
  if (path.find("/match") == Text::npos || !policySet) {
    return false;
  }
  for (const auto& [vrf, policy] : policySet->policy()) {
    for (const auto& [priority, rule] : policy->rule()) {
      for (const auto& [name, origin] : rule->origin()) {
        const Text place =
            "/rule[" + std::to_string(priority.value()) + "]/origin[" + Text(name) + "]/match";
        if (!origin->match() && path.find(place) != Text::npos) {
          return true;
        }
      }
    }
  }
  return false;
}

/// Why a path may differ; null when it may not.
const char* intendedReason(const LibrarySide& world, const Past& past, std::size_t tree,
                           const Text& path) {
  const std::size_t begin = path.find('[') + 1;
  const Text device = path.substr(begin, path.find(']') - begin);
  if (past.recordIsUnseen(tree, device)) {
    return "the record is unseen";
  }
  if (past.namesWereShared(device)) {
    return "network VRF names were shared";
  }
  if (stampedAtAnotherTime(path)) {
    return "stamped at another time";
  }
  return matchStays(world, device, path) ? "the match stays" : nullptr;
}

void compare(const LibrarySide& world, const Past& past, ScratchOutcome& outcome) {
  std::array<Content, 2> followed;
  std::array<Content, 2> fresh;
  for (std::size_t tree = 0; tree != 2; ++tree) {
    collect(followed[tree], *world.tops[3 + tree], "");
  }
  {
    LibrarySide scratch(Seen{});
    for (std::size_t top = 0; top != 3; ++top) {
      copy(*world.tops[top], *scratch.tops[top]);
    }
    for (const From root : {From::policyRoot, From::serviceRoot}) {
      Operation start;
      start.verb = Operation::Verb::start;
      start.at.from = root;
      scratch.apply(start);
    }
    for (std::size_t tree = 0; tree != 2; ++tree) {
      collect(fresh[tree], *scratch.tops[3 + tree], "");
    }
  }
  ++outcome.comparisons;
  for (std::size_t tree = 0; tree != 2; ++tree) {
    Content paths = followed[tree];
    paths.insert(fresh[tree].begin(), fresh[tree].end());
    for (const auto& [path, value] : paths) {
      const auto here = followed[tree].find(path);
      const auto there = fresh[tree].find(path);
      const bool both = here != followed[tree].end() && there != fresh[tree].end();
      if (both && here->second == there->second) {
        continue;
      }
      if (const char* const reason = intendedReason(world, past, tree, path)) {
        ++outcome.intended[reason];
      } else if (outcome.difference.empty()) {
        outcome.difference =
            path + ": followed \"" + (here == followed[tree].end() ? "(absent)" : here->second) +
            "\", fresh \"" + (there == fresh[tree].end() ? "(absent)" : there->second) + "\"";
      }
    }
  }
}

// Tells both roots of all devices.
void redeliver(LibrarySide& world, Past& past) {
  for (const From tree : {From::policyV1, From::serviceV1}) {
    for (const auto& [device, records] : kRecordsOf) {
      Operation notify;
      notify.verb = Operation::Verb::notify;
      notify.at.from = tree;
      notify.id = 258;
      notify.key = device;
      world.apply(notify);
      past.see(notify);
    }
  }
}

}  // namespace

Text differenceFromFresh(const LibrarySide& world) {
  ScratchOutcome outcome;
  compare(world, Past(world), outcome);
  return outcome.difference;
}

ScratchOutcome compareWithScratch(const std::vector<Operation>& operations, std::size_t every) {
  ScratchOutcome outcome;
  LibrarySide world(Seen{});
  Past past(world);
  for (const Operation& operation : operations) {
    world.log.clear();
    world.time = static_cast<double>(++outcome.operations);
    world.apply(operation);
    if (past.see(operation) && outcome.operations % 5 != 0) {
      redeliver(world, past);
    }
    if (outcome.operations % every == 0 || &operation == &operations.back()) {
      compare(world, past, outcome);
    }
    if (!outcome.difference.empty()) {
      break;
    }
  }
  return outcome;
}

}  // namespace Reference
