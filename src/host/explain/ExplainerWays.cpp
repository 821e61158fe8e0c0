// What stands for what on the way, before anything is looked up there.

#include <algorithm>

#include "explain/Counterpart.h"
#include "explain/Explainer.h"
#include "text/Concat.h"

namespace Host {
namespace {

/// The attribute of a state machine that has the machines below it.
const Kel::Row& childrenOf(const Kel::PtrInterface& machine) {
  return *std::ranges::find(machine.fwkType().descriptor().rows, Kel::RowKind::children,
                            &Kel::Row::kind);
}

const Kel::PtrInterface* machineBelow(const Kel::PtrInterface& machine, const void* key) {
  return asObject(childrenOf(machine).find(machine, key));
}

/// What a machine was given under this name, as text.
std::string textOf(const Kel::PtrInterface& machine, std::string_view name) {
  const Kel::Row& row = *machine.fwkType().descriptor().row(name);
  return valueText(row.value(), row.find(machine, nullptr));
}

bool hasEntries(const Node& node) {
  return node.kind == Node::Kind::list || node.kind == Node::Kind::records ||
         node.kind == Node::Kind::leafList;
}

}  // namespace

std::string Explainer::whyNot(const TreePath& path) {
  const std::string where = pathOf(stepsOf(path));
  if (path.front().node->module == "vela-policy-monitor") {
    return concat(
        {"there is nothing to explain at ", where, ": ask for an entry of version 1 or version 2"});
  }
  if (path.size() <= kDevice) {
    return concat({"which device is meant? Write ", where, "/",
                   path.front().node->children.front()->name, "[device-name='...']"});
  }
  return hasEntries(*path.back().node) && path.back().key == nullptr
             ? concat({"which entry of ", path.back().node->name,
                       " is meant? Explain one of them, with its key behind ", where})
             : "";
}

void Explainer::ways(const TreePath& path) {
  const bool from1 = !path.front().node->state;
  TreePath& known = from1 ? way1_ : way2_;
  TreePath& other = from1 ? way2_ : way1_;
  known = path;
  while (known.back().node->isKey()) {
    known.pop_back();  // a key is there with its entry
  }
  levels_ = known.size();
  device_ = keyText(*known[kDevice].node, known[kDevice].keyPlace());
  served_.emplace(trees_, device_);
  for (std::size_t i = 0; i < known.size(); ++i) {
    const OwnedStep& step = known[i];
    const Node* const node = from1 ? madeFrom(*step.node) : sourceOf(*step.node);
    if (node == nullptr) {
      return;
    }
    OwnedValue key;
    if (step.key != nullptr) {
      key = i != kVrf ? sameKey(step.node->row->key(), step.keyPlace(), node->row->key())
            : from1   ? keyInVersion2(step)
                      : keyInVersion1(step);
      if (key == nullptr) {
        return;
      }
    }
    other.push_back({node, std::move(key)});
  }
}

/// The entry of version 2 that this VRF is made to: as the monitor has it, else as its machine.
OwnedValue Explainer::keyInVersion2(const OwnedStep& vrf1) const {
  Kel::String name(netVrfNameOf(keyText(*vrf1.node, vrf1.keyPlace())));
  const Object* const device = name.empty() ? deviceMachine() : nullptr;
  if (device != nullptr) {
    const Object* const machine = machineBelow(*device, vrf1.keyPlace());
    name = machine == nullptr ? name : Kel::String(textOf(*machine, "netVrfName"));
  }
  return name.empty() ? nullptr : copyOf(madeFrom(*vrf1.node)->row->key(), &name);
}

/// The VRF that this entry of version 2 is made from: as the monitor has it, or as a machine has it
/// that has not followed the monitor yet.
OwnedValue Explainer::keyInVersion1(const OwnedStep& vrf2) const {
  const std::string name = keyText(*vrf2.node, vrf2.keyPlace());
  const std::vector<std::string> vrfs = vrfsCalled(name);
  const std::string vrf = vrfs.empty() ? vrfOfMachineFor(name) : vrfs.front();
  auto key = std::make_shared<Kel::AnyValue>(sourceOf(*vrf2.node)->row->key());
  std::string why;
  return !vrf.empty() && key->type().parse(vrf, key->get(), why) ? key : nullptr;
}

/// The state machine of the device; null: there is none.
const Kel::PtrInterface* Explainer::deviceMachine() const {
  const Object* const root = translation_.root(policies_);
  return root == nullptr ? nullptr : machineBelow(*root, way1_[kDevice].keyPlace());
}

/// The VRF whose state machine writes to this entry of version 2; empty: none does.
std::string Explainer::vrfOfMachineFor(const std::string& netVrfName) const {
  struct Context {
    const std::string& wanted;
    std::string vrf;
  } context{netVrfName, {}};
  if (const Object* const device = deviceMachine()) {
    childrenOf(*device).walk(*device, &context,
                             [](void* at, const void* /*key*/, const void* child) {
                               auto& [wanted, vrf] = *static_cast<Context*>(at);
                               const auto& machine = *static_cast<const Object*>(child);
                               if (textOf(machine, "netVrfName") == wanted) {
                                 vrf = textOf(machine, "vrfName");
                               }
                             });
  }
  return context.vrf;
}

std::string Explainer::netVrfNameOf(const std::string& vrf) const {
  return served_->record == nullptr
             ? ""
             : Kel::textOf(served_->record->netVrfNameByVrf(Kel::String(vrf)));
}

/// The VRFs of this device in version 1 that have this network VRF name, sorted.
std::vector<std::string> Explainer::vrfsCalled(const std::string& netVrfName) const {
  struct Context {
    const Explainer& self;
    const std::string& name;
    std::vector<std::string> vrfs;
  } context{*this, netVrfName, {}};
  const Node& devices = *way1_[kDevice].node;
  const void* const device =
      devices.row->find(way1_.front().node->top->root(trees_), way1_[kDevice].keyPlace());
  if (device != nullptr) {
    const auto vrfs = std::ranges::find(devices.children, Node::Kind::list, &Node::kind);
    (*vrfs)->row->walk(*static_cast<const Object*>(device), &context,
                       [](void* at, const void* key, const void* /*entry*/) {
                         auto& [self, wanted, found] = *static_cast<Context*>(at);
                         const auto list = std::ranges::find(self.way1_[kDevice].node->children,
                                                             Node::Kind::list, &Node::kind);
                         const std::string vrf = keyText(**list, key);
                         if (self.netVrfNameOf(vrf) == wanted) {
                           found.push_back(vrf);
                         }
                       });
  }
  std::ranges::sort(context.vrfs);
  return std::move(context.vrfs);
}

}  // namespace Host
