#include "data/EntityFiller.h"

namespace Host {

void EntityFiller::open(const Node& container) {
  if (container.top != nullptr) {
    levels_.push_back({&container.top->root(trees_)});
  } else {
    void* const made = container.row->put(*levels_.back().object, nullptr, nullptr);
    levels_.push_back({static_cast<Kel::PtrInterface*>(made)});
  }
}

void EntityFiller::openList(const Node& list) {
  levels_.back().startedEmpty = sizeOf(list) == 0;
  levels_.back().had.clear();
}

bool EntityFiller::openEntry(const Node& list, const void* key) {
  const std::size_t before = sizeOf(list);
  void* const made = list.row->put(*levels_.back().object, key, nullptr);
  if (!isNew(list, key, before)) {
    return false;
  }
  levels_.push_back({static_cast<Kel::PtrInterface*>(made)});
  return true;
}

void EntityFiller::close() { levels_.pop_back(); }

void EntityFiller::leaf(const Node& leaf, const void* value) {
  leaf.row->put(*levels_.back().object, nullptr, value);
}

bool EntityFiller::member(const Node& list, const void* key) {
  const std::size_t before = sizeOf(list);
  list.row->put(*levels_.back().object, key, nullptr);
  return isNew(list, key, before);
}

bool EntityFiller::pair(const Node& mapping, const void* key, const void* value) {
  const std::size_t before = sizeOf(mapping);
  Kel::PtrInterface& object = *levels_.back().object;
  if (value != nullptr) {
    mapping.row->put(object, key, value);
  } else if (mapping.row->find(object, key) == nullptr) {
    const Kel::AnyValue none(mapping.row->value());
    mapping.row->put(object, key, none.get());
  }
  return isNew(mapping, key, before);
}

bool EntityFiller::isNew(const Node& list, const void* key, std::size_t sizeBefore) {
  Level& level = levels_.back();
  if (level.startedEmpty) {
    return sizeOf(list) != sizeBefore;
  }
  text_.clear();
  list.row->key().append(text_, key);
  return level.had.insert(text_).second;
}

}  // namespace Host
