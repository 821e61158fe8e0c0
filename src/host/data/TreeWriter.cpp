#include "data/TreeWriter.h"

#include <algorithm>
#include <vector>

#include "data/SortedKeys.h"

namespace Host {
namespace {

/// The entity that is known to be there.
const Kel::PtrInterface& entityAt(const Node& node, const Kel::PtrInterface& parent,
                                  const void* key) {
  return *static_cast<const Kel::PtrInterface*>(node.row->find(parent, key));
}

/// Whether there is anything where `path` leads to from `object`.
bool isThere(std::span<const OwnedStep> path, const Kel::PtrInterface& object) {
  if (path.empty() || path.front().node->row == nullptr) {
    return true;  // a leaf of a record or of a pair is there with it
  }
  const OwnedStep& step = path.front();
  const Node& node = *step.node;
  if (step.key == nullptr && node.kind != Node::Kind::leaf && node.kind != Node::Kind::presence) {
    return node.row->size(object) != 0;
  }
  const void* const found = node.row->find(object, step.keyPlace());
  if (found == nullptr || node.kind == Node::Kind::leaf) {
    return found != nullptr && !node.type->absent(found);
  }
  const bool isEntity = node.kind == Node::Kind::list || node.kind == Node::Kind::presence;
  return !isEntity || isThere(path.subspan(1), *static_cast<const Kel::PtrInterface*>(found));
}

}  // namespace

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
  for (const void* const each : sorted) {
    record(list, each);
  }
  json_.closeArray();
}

void TreeWriter::mapping(const Node& mapping, const Kel::PtrInterface& object) {
  const SortedKeys sorted(*mapping.row, object);
  json_.openArray();
  for (const void* const key : sorted) {
    pair(mapping, key, mapping.row->find(object, key));
  }
  json_.closeArray();
}

void TreeWriter::record(const Node& list, const void* record) {
  json_.openRecord();
  for (const Node* const leaf : list.children) {
    json_.name(leaf->name);
    json_.value(*leaf->type, static_cast<const std::byte*>(record) + leaf->offset);
  }
  json_.closeRecord();
}

void TreeWriter::pair(const Node& mapping, const void* key, const void* value) {
  const Node& keyLeaf = *mapping.children[0];
  const Node& valueLeaf = *mapping.children[1];
  json_.openRecord();
  json_.name(keyLeaf.name);
  json_.value(*keyLeaf.type, key);
  json_.name(valueLeaf.name);
  json_.value(*valueLeaf.type, value);
  json_.closeRecord();
}

void TreeWriter::at(const TreePath& path, const Trees& trees) {
  const Node& top = *path.front().node;
  const Kel::PtrInterface& root = top.top->root(trees);
  if (!isThere(std::span(path).subspan(1), root)) {
    return;
  }
  json_.name(qualifiedName(top));
  json_.openObject();
  narrowed(top, root, std::span(path).subspan(1));
  json_.closeObject();
}

/// Of `object`, which `node` describes: what `path` leads to from there.
void TreeWriter::narrowed(const Node& node, const Kel::PtrInterface& object,
                          std::span<const OwnedStep> path) {
  if (path.empty()) {
    return members(node, object);
  }
  const OwnedStep& step = path.front();
  const Node& child = *step.node;
  if (child.kind == Node::Kind::presence) {
    json_.name(child.name);
    json_.openObject();
    narrowed(child, entityAt(child, object, nullptr), path.subspan(1));
    json_.closeObject();
  } else if (step.key != nullptr) {
    json_.name(child.name);
    narrowedEntry(step, object, path.subspan(1));
  } else if (!child.isKey()) {  // those were written already
    member(child, object);
  }
}

/// One entry alone, as an array.
void TreeWriter::narrowedEntry(const OwnedStep& step, const Kel::PtrInterface& object,
                               std::span<const OwnedStep> below) {
  const Node& list = *step.node;
  const void* const key = step.keyPlace();
  if (list.kind == Node::Kind::leafList) {
    json_.openScalars();
    json_.value(*list.type, key);
    return json_.closeScalars();
  }
  json_.openArray();
  if (list.kind == Node::Kind::records) {
    record(list, key);
  } else if (list.kind == Node::Kind::mapping) {
    pair(list, key, list.row->find(object, key));
  } else {
    const Kel::PtrInterface& entry = entityAt(list, object, key);
    json_.openObject();
    if (!below.empty()) {
      member(*list.children.front(), entry);
    }
    narrowed(list, entry, below);
    json_.closeObject();
  }
  json_.closeArray();
}

}  // namespace Host
