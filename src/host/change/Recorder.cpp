#include "change/Recorder.h"

namespace Host {

Recorder::Recorder(Datum& root) : root_(root) {
  // Below the entry that a path names, members come at once; everything else announces itself.
  if (root.node->kind == Node::Kind::list && root.key != nullptr) {
    levels_.push_back({&root});
  }
}

/// The place for what comes next: the root itself, or a part of what is open.
Datum& Recorder::add(const Node& node) {
  if (levels_.empty() || levels_.back().datum == nullptr) {
    return root_;
  }
  levels_.back().datum->parts.push_back({&node});
  return levels_.back().datum->parts.back();
}

void Recorder::open(const Node& container) {
  Datum& datum = add(container);
  levels_.push_back({&datum});
}

void Recorder::openList(const Node& list) {
  Datum& datum = add(list);
  if (levels_.empty()) {
    levels_.push_back({nullptr});
  }
  levels_.back().list = &datum;
  levels_.back().had = Keys(KeyBelow{&list.row->key()});
}

Datum* Recorder::addEntry(const Node& list, const void* key) {
  Level& level = levels_.back();
  OwnedValue copy = copyOf(list.row->key(), key);
  const std::size_t before = level.had.size();
  level.had.insert(level.had.end(), copy->get());
  if (level.had.size() == before) {
    return nullptr;
  }
  level.list->parts.push_back({&list, std::move(copy)});
  return &level.list->parts.back();
}

bool Recorder::openEntry(const Node& list, const void* key) {
  Datum* const entry = addEntry(list, key);
  if (entry != nullptr) {
    levels_.push_back({entry});
  }
  return entry != nullptr;
}

void Recorder::leaf(const Node& leaf, const void* value) {
  add(leaf).value = copyOf(*leaf.type, value);
}

bool Recorder::member(const Node& list, const void* key) { return addEntry(list, key) != nullptr; }

bool Recorder::pair(const Node& mapping, const void* key, const void* value) {
  const bool isRoot = levels_.empty();
  Datum* const entry = isRoot ? &root_ : addEntry(mapping, key);
  if (entry != nullptr && value != nullptr) {
    entry->value = copyOf(mapping.row->value(), value);
  }
  return entry != nullptr;
}

}  // namespace Host
