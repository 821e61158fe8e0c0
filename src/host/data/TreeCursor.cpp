#include "data/TreeCursor.h"

#include "Brix/Publisher.h"

namespace Host {
namespace {

constexpr std::string_view kMonitor = "vela-policy-monitor";

}  // namespace

bool TreeCursor::go(std::span<const OwnedStep> steps) {
  places_.clear();
  for (const OwnedStep& step : steps) {
    if (!enter(*step.node, step.keyPlace())) {
      return false;
    }
  }
  return true;
}

void TreeCursor::make(std::span<const OwnedStep> steps) {
  places_.clear();
  for (const OwnedStep& step : steps) {
    create(*step.node, step.keyPlace());
  }
}

bool TreeCursor::enter(const Node& node, const void* key) {
  if (node.top != nullptr) {
    push(node, nullptr, &node.top->root(trees_));
    return true;
  }
  const void* const object = find(node, key);
  if (object != nullptr) {
    push(node, key, object);
  }
  return object != nullptr;
}

bool TreeCursor::create(const Node& node, const void* key) {
  if (enter(node, key)) {
    return false;
  }
  const Brix::Ptr<Kel::PtrInterface> parent = places_.back().object;
  void* made = nullptr;
  attempt([&] { made = node.row->put(*parent, key, nullptr); });
  // An observer that raises keeps the creator from returning what it has created.
  push(node, key, made != nullptr ? static_cast<Kel::PtrInterface*>(made) : find(node, key));
  touch();
  noteRecord(node, key);
  return true;
}

const void* TreeCursor::find(const Node& node, const void* key) const {
  return node.row->find(object(), key);
}

void TreeCursor::put(const Node& node, const void* key, const void* value) {
  attempt([&] { node.row->put(*places_.back().object, key, value); });
  touch();
  notePair(node, key, value);
  if (Touched::signalOf(*places_.back().node) == &node) {
    touched_.addSignal(pathTo(places_.size()));
  }
}

void TreeCursor::erase(const Node& node, const void* key) {
  attempt([&] { node.row->erase(*places_.back().object, key); });
  touch();
  noteRecord(node, key);
}

void TreeCursor::publish(const Node& node, const void* key) {
  const Kel::PtrInterface& object = *places_.back().object;
  const Brix::Publisher publisher = object.fwkType().descriptor().publisher(object);
  attempt([&] { publisher.publish(node.row->id, key); });
  ++writes_;
}

void TreeCursor::push(const Node& node, const void* key, const void* object) {
  // Rows hand out entities to be read; those of version 1 and of the monitor are ours to write.
  auto* const entity =
      const_cast<Kel::PtrInterface*>(static_cast<const Kel::PtrInterface*>(object));
  places_.push_back({&node, Brix::Ptr<Kel::PtrInterface>(entity), key});
}

/// Something in the object at this place has changed, or it is new.
void TreeCursor::touch() {
  ++writes_;
  for (std::size_t i = places_.size(); i-- > 1;) {
    if (Touched::signalOf(*places_[i].node) == nullptr) {
      continue;
    }
    if (places_[i].object != lastTouched_) {
      lastTouched_ = places_[i].object;
      touched_.add(pathTo(i + 1));
    }
    return;
  }
}

TreePath TreeCursor::pathTo(std::size_t depth) const {
  TreePath path;
  for (std::size_t i = 0; i < depth; ++i) {
    const Place& place = places_[i];
    path.push_back(
        {place.node, place.key == nullptr ? nullptr : copyOf(place.node->row->key(), place.key)});
  }
  return path;
}

void TreeCursor::noteRecord(const Node& list, const void* key) {
  if (list.kind == Node::Kind::list && list.module == kMonitor) {
    std::string record;
    list.row->key().append(record, key);
    touched_.addRecord(std::move(record));
  }
}

void TreeCursor::notePair(const Node& mapping, const void* key, const void* value) {
  if (mapping.kind == Node::Kind::mapping) {
    Touched::Pair pair;
    const Place& record = places_.back();
    record.node->row->key().append(pair.record, record.key);
    mapping.row->key().append(pair.key, key);
    mapping.row->value().append(pair.value, value);
    touched_.addPair(std::move(pair));
  }
}

void TreeCursor::keep(const char* error) {
  if (!failed_) {
    error_ = error;
  }
  failed_ = true;
}

}  // namespace Host
