#include "data/TreeWriter.h"

#include <algorithm>
#include <vector>

#include "data/SortedKeys.h"

namespace Host {

void TreeWriter::container(const Node& top, const Trees& trees) {
  json_.name(qualifiedName(top));
  json_.openObject();
  members(top, top.top->root(trees));
  json_.closeObject();
}

void TreeWriter::members(const Node& node, const Kel::PtrInterface& object) {
  for (const Node* const child : node.children) {
    if (withState_ || !child->state) {
      member(*child, object);
    }
  }
}

void TreeWriter::member(const Node& child, const Kel::PtrInterface& object) {
  if (child.kind == Node::Kind::leaf) {
    const void* const value = child.row->find(object, nullptr);
    if (!child.type->absent(value)) {
      json_.name(child.name);
      json_.value(*child.type, value);
    }
  } else if (child.kind == Node::Kind::presence) {
    const void* const single = child.row->find(object, nullptr);
    if (single != nullptr) {
      json_.name(child.name);
      json_.openObject();
      members(child, *static_cast<const Kel::PtrInterface*>(single));
      json_.closeObject();
    }
  } else if (child.row->size(object) != 0) {
    json_.name(child.name);
    if (child.kind == Node::Kind::list) {
      entries(child, object);
    } else if (child.kind == Node::Kind::mapping) {
      mapping(child, object);
    } else {
      keys(child, object);
    }
  }
}

void TreeWriter::entries(const Node& list, const Kel::PtrInterface& object) {
  std::vector<const Kel::PtrInterface*> sorted;
  sorted.reserve(list.row->size(object));
  list.row->walk(object, &sorted, [](void* all, const void* /*key*/, const void* entry) {
    static_cast<std::vector<const Kel::PtrInterface*>*>(all)->push_back(
        static_cast<const Kel::PtrInterface*>(entry));
  });
  const Node& key = *list.children.front();
  std::ranges::sort(sorted, [&](const Kel::PtrInterface* a, const Kel::PtrInterface* b) {
    return key.type->compare(key.row->find(*a, nullptr), key.row->find(*b, nullptr)) < 0;
  });
  json_.openArray();
  for (const Kel::PtrInterface* const entry : sorted) {
    json_.openObject();
    members(list, *entry);
    json_.closeObject();
  }
  json_.closeArray();
}

void TreeWriter::keys(const Node& list, const Kel::PtrInterface& object) {
  const SortedKeys sorted(*list.row, object);
  if (list.kind == Node::Kind::leafList) {
    json_.openScalars();
    for (const void* const key : sorted) {
      json_.value(*list.type, key);
    }
    json_.closeScalars();
    return;
  }
  json_.openArray();
  for (const void* const record : sorted) {
    json_.openRecord();
    for (const Node* const leaf : list.children) {
      json_.name(leaf->name);
      json_.value(*leaf->type, static_cast<const std::byte*>(record) + leaf->offset);
    }
    json_.closeRecord();
  }
  json_.closeArray();
}

void TreeWriter::mapping(const Node& mapping, const Kel::PtrInterface& object) {
  const SortedKeys sorted(*mapping.row, object);
  const Node& keyLeaf = *mapping.children[0];
  const Node& valueLeaf = *mapping.children[1];
  json_.openArray();
  for (const void* const key : sorted) {
    json_.openRecord();
    json_.name(keyLeaf.name);
    json_.value(*keyLeaf.type, key);
    json_.name(valueLeaf.name);
    json_.value(*valueLeaf.type, mapping.row->find(object, key));
    json_.closeRecord();
  }
  json_.closeArray();
}

}  // namespace Host
