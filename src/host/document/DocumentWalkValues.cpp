#include "data/NodeFaults.h"
#include "document/DocumentWalk.h"
#include "text/Concat.h"

namespace Host {
namespace {

bool has(std::uint64_t seen, std::size_t index) { return ((seen >> index) & 1U) != 0; }

}  // namespace

/// Reads an object that has nothing but leaves; none when there was a fault in it.
template <class PlaceOf>
std::optional<DocumentWalk::Seen> DocumentWalk::leaves(const Node& node, Value value,
                                                       PlaceOf placeOf, bool withKeys) {
  if (!is(JsonKind::object, value)) {
    return std::nullopt;
  }
  const std::string_view where = value.raw_json_token();
  const std::size_t faultsBefore = faults_.size();
  Seen seen = 0;
  std::size_t hint = 0;
  for (auto field : take(value.get_object())) {
    const std::string_view name = tokens_.nameOf(field);
    const Node* const child = node.child(withoutModule(node, name), hint);
    if (child == nullptr) {
      fault(quoted(name), whyNoNode(node, name));
      continue;
    }
    const Within step(steps_, *child);
    if (isFirst(child->position, name, seen)) {
      leaf(*child, take(field.value()), placeOf(*child));
    }
  }
  for (std::size_t i = 0; withKeys && i < node.keys; ++i) {
    if (!has(seen, i)) {
      fault(where, concat({"the key \"", node.children[i]->name, "\" is missing in this entry of ",
                           node.name}));
    }
  }
  return faults_.size() == faultsBefore ? std::optional(seen) : std::nullopt;
}

void DocumentWalk::record(const Node& list, Value value, void* place) {
  const std::string_view where = value.raw_json_token();
  const auto placeOf = [place](const Node& leaf) {
    return static_cast<std::byte*>(place) + leaf.offset;
  };
  if (leaves(list, value, placeOf, true)) {
    steps_.back().key = place;
    if (receiver_ != nullptr && !receiver_->member(list, place)) {
      fault(where, "this entry is in the list already");
    }
  }
}

void DocumentWalk::pair(const Node& mapping, Value value, void* key, void* place) {
  const std::string_view where = value.raw_json_token();
  const auto placeOf = [=](const Node& leaf) { return leaf.isKey() ? key : place; };
  if (const auto seen = leaves(mapping, value, placeOf, true)) {
    steps_.back().key = key;
    const void* const given = has(*seen, mapping.keys) ? place : nullptr;
    if (receiver_ != nullptr && !receiver_->pair(mapping, key, given)) {
      fault(where, "this entry is in the list already");
    }
  }
}

void DocumentWalk::at(std::span<const Step> path, Value value) {
  steps_.assign(path.begin(), path.end());
  const Node& node = *path.back().node;
  const void* const key = path.back().key;
  if (key == nullptr) {
    this->value(node, value);
  } else if (node.kind == Node::Kind::list) {
    entryAt(node, value, key);
  } else if (node.kind == Node::Kind::records) {
    recordAt(node, value, key);
  } else if (node.kind == Node::Kind::mapping) {
    pairAt(node, value, key);
  } else {
    leafListEntryAt(node, value, key);
  }
  steps_.clear();
}

void DocumentWalk::entryAt(const Node& list, Value value, const void* key) {
  if (!is(JsonKind::object, value)) {
    return;
  }
  const Node& node = *list.children.front();
  Object object = take(value.get_object());
  for (auto field : object) {
    if (withoutModule(list, tokens_.nameOf(field)) == node.name) {
      Value given = take(field.value());
      Kel::AnyValue place(*node.type);
      const Within step(steps_, node);
      if (leaf(node, given, place.get())) {
        agree(node, given.raw_json_token(), key, place.get());
      }
      break;
    }
  }
  take(object.reset());
  members(list, object);
}

void DocumentWalk::recordAt(const Node& list, Value value, const void* key) {
  const std::string_view where = value.raw_json_token();
  Kel::AnyValue place(*list.type);
  list.type->assign(place.get(), key);
  const auto placeOf = [&](const Node& leaf) {
    return static_cast<std::byte*>(place.get()) + leaf.offset;
  };
  if (leaves(list, value, placeOf, false)) {
    for (const Node* const leaf : list.children) {
      agree(*leaf, where, static_cast<const std::byte*>(key) + leaf->offset, placeOf(*leaf));
    }
  }
}

void DocumentWalk::pairAt(const Node& mapping, Value value, const void* key) {
  const std::string_view where = value.raw_json_token();
  Kel::AnyValue keyPlace(mapping.row->key());
  Kel::AnyValue place(mapping.row->value());
  mapping.row->key().assign(keyPlace.get(), key);
  const auto placeOf = [&](const Node& leaf) {
    return leaf.isKey() ? keyPlace.get() : place.get();
  };
  if (const auto seen = leaves(mapping, value, placeOf, false)) {
    agree(*mapping.children.front(), where, key, keyPlace.get());
    if (receiver_ != nullptr) {
      receiver_->pair(mapping, key, has(*seen, mapping.keys) ? place.get() : nullptr);
    }
  }
}

void DocumentWalk::leafListEntryAt(const Node& list, Value value, const void* key) {
  Kel::AnyValue place(*list.type);
  if (leaf(list, value, place.get())) {
    agree(list, value.raw_json_token(), key, place.get());
  }
}

void DocumentWalk::agree(const Node& node, std::string_view where, const void* inPath,
                         const void* inValue) {
  if (node.type->compare(inPath, inValue) != 0) {
    std::string wanted;
    std::string found;
    node.type->append(wanted, inPath);
    node.type->append(found, inValue);
    fault(where, concat({"the path has the ", node.name, " \"", wanted, "\", the value \"", found,
                         "\"; expected the same, or none in the value"}));
  }
}

}  // namespace Host
