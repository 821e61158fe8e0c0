#include "agent/Reach.h"

#include <algorithm>

#include "translation/ServingRecord.h"

namespace Host {
namespace {

constexpr std::string_view kMonitor = "vela-policy-monitor";

/// The entry of this name in the list of devices of a container.
TreePath entryOf(const Node& top, const std::string& name) {
  const Node& list = *top.children.front();
  auto key = std::make_shared<Kel::AnyValue>(list.row->key());
  std::string why;
  list.row->key().parse(name, key->get(), why);
  return {{&top}, {&list, std::move(key)}};
}

}  // namespace

Reach::Reach(const Trees& trees, const Change& change) : trees_(trees) {
  everything_ = change.control.has_value();
  for (const auto* const paths : {&change.deletes, &change.notifies}) {
    std::ranges::for_each(*paths, [this](const TreePath& path) { add(path); });
  }
  for (const auto* const edits : {&change.replaces, &change.updates}) {
    std::ranges::for_each(*edits, [this](const Edit& edit) { add(edit.path); });
  }
}

void Reach::add(const TreePath& path) {
  if (path.size() < 2 || path[1].key == nullptr) {
    everything_ = true;
    return;
  }
  std::string name;
  path[1].node->row->key().append(name, path[1].keyPlace());
  if (path.front().node->module == kMonitor) {
    addServed(name);
  } else {
    devices_.insert(name);
  }
}

/// A record serves its own device, and pairs.
void Reach::addServed(const std::string& record) {
  const auto look = [&](const auto& devices) {
    for (const auto& [device, entry] : devices) {
      const std::string name = Kel::textOf(device);
      if (std::ranges::count(ServingRecord(trees_, name).keys, record) != 0) {
        devices_.insert(name);
      }
    }
  };
  devices_.insert(record);
  look(trees_.policyV1->policySet());
  look(trees_.serviceDeviceV1->serviceDevice());
}

std::vector<TreePath> Reach::written() const {
  if (everything_) {
    return {TreePath()};
  }
  std::set<std::string> records;
  std::vector<TreePath> paths;
  for (const std::string& device : devices_) {
    for (const Node* const top : Schema::instance().tops()) {
      if (top->state) {
        paths.push_back(entryOf(*top, device));
      }
    }
    const ServingRecord served(trees_, device);
    records.insert(served.keys.begin(), served.keys.end());
  }
  for (const std::string& record : records) {
    paths.push_back(entryOf(*Schema::instance().top("vela-policy-monitor:status"), record));
  }
  return paths;
}

}  // namespace Host
