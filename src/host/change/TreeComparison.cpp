#include "change/TreeComparison.h"

#include <algorithm>

#include "data/SortedKeys.h"

namespace Host {
namespace {

using Kind = Node::Kind;

const Kel::PtrInterface* entity(const void* found) {
  return static_cast<const Kel::PtrInterface*>(found);
}

const void* findIn(const Kel::PtrInterface* object, const Node& node, const void* key) {
  return object == nullptr ? nullptr : node.row->find(*object, key);
}

/// Whether the scalars of this type say the same; null says nothing.
bool areEqual(const Kel::ValueType& type, const void* a, const void* b) {
  return (a == nullptr || b == nullptr)
             ? a == b
             : type.compare(a, b) == 0 && type.absent(a) == type.absent(b);
}

bool isConfigured(const Node& child) { return !child.isKey() && !child.state; }

/// Whether `a` and `b`, which `node` describes, have the same in them.
bool sameMembers(const Node& node, const Kel::PtrInterface& a, const Kel::PtrInterface& b);

bool sameEntry(const Node& node, const void* a, const void* b) {
  if (a == nullptr || b == nullptr) {
    return a == b;
  }
  if (node.kind == Kind::mapping) {
    return areEqual(node.row->value(), a, b);
  }
  const bool isEntity = node.kind == Kind::list || node.kind == Kind::presence;
  return !isEntity || sameMembers(node, *entity(a), *entity(b));
}

bool sameMember(const Node& child, const Kel::PtrInterface& a, const Kel::PtrInterface& b) {
  if (child.kind == Kind::leaf) {
    return areEqual(*child.type, child.row->find(a, nullptr), child.row->find(b, nullptr));
  }
  if (child.kind == Kind::presence) {
    return sameEntry(child, child.row->find(a, nullptr), child.row->find(b, nullptr));
  }
  const SortedKeys keys(*child.row, a);
  return child.row->size(a) == child.row->size(b) &&
         std::all_of(keys.begin(), keys.end(), [&](const void* key) {
           return sameEntry(child, child.row->find(a, key), child.row->find(b, key));
         });
}

bool sameMembers(const Node& node, const Kel::PtrInterface& a, const Kel::PtrInterface& b) {
  return std::ranges::all_of(node.children, [&](const Node* child) {
    return !isConfigured(*child) || sameMember(*child, a, b);
  });
}

Datum datumOf(const Node& node, const OwnedValue& key, const void* found);

/// What stands below `object`; a leaf that says what an absent one means is left out.
std::vector<Datum> partsOf(const Node& node, const Kel::PtrInterface& object) {
  std::vector<Datum> parts;
  for (const Node* const child : node.children) {
    if (!isConfigured(*child)) {
      continue;
    }
    if (child->kind == Kind::leaf || child->kind == Kind::presence) {
      const void* const found = child->row->find(object, nullptr);
      const bool isLeaf = child->kind == Kind::leaf;
      if (isLeaf ? !areEqual(*child->type, found, Kel::AnyValue(*child->type).get())
                 : found != nullptr) {
        parts.push_back(datumOf(*child, nullptr, found));
      }
    } else if (child->row->size(object) != 0) {
      Datum& list = parts.emplace_back(Datum{child});
      for (const void* const key : SortedKeys(*child->row, object)) {
        list.parts.push_back(
            datumOf(*child, copyOf(child->row->key(), key), child->row->find(object, key)));
      }
    }
  }
  return parts;
}

/// What was found at `node`, of a list one entry.
Datum datumOf(const Node& node, const OwnedValue& key, const void* found) {
  Datum datum{&node, key};
  if (node.kind == Kind::leaf) {
    datum.value = copyOf(*node.type, found);
  } else if (node.kind == Kind::mapping) {
    datum.value = copyOf(node.row->value(), found);
  } else if (node.kind == Kind::list || node.kind == Kind::presence) {
    datum.parts = partsOf(node, *entity(found));
  }
  return datum;
}

}  // namespace

Change TreeComparison::run() {
  // The monitor's records, which are the last, come first: a new device is translated by the record
  // that it finds.
  std::vector<const Node*> tops = Schema::instance().tops();
  std::ranges::reverse(tops);
  for (const Node* const top : tops) {
    if (!top->state) {
      path_ = {{top}};
      members(*top, {top->top->root(before_), top->top->root(after_), &top->top->root(running_)});
    }
  }
  return std::move(change_);
}

void TreeComparison::members(const Node& node, const Three& three) {
  for (const Node* const child : node.children) {
    if (isConfigured(*child)) {
      member(*child, three);
    }
  }
}

void TreeComparison::member(const Node& child, const Three& three) {
  if (child.kind == Kind::leaf) {
    leaf(child, three);
  } else if (child.kind == Kind::presence) {
    entry(child, nullptr, three);
  } else {
    entries(child, three);
  }
}

void TreeComparison::leaf(const Node& leaf, const Three& three) {
  const void* const after = leaf.row->find(three.after, nullptr);
  if (!leaf.type->absent(after) && !sameMember(leaf, three.before, three.after) &&
      !areEqual(*leaf.type, after, findIn(three.running, leaf, nullptr))) {
    changed({&leaf}, datumOf(leaf, nullptr, after));
  }
}

void TreeComparison::entries(const Node& list, const Three& three) {
  for (const void* const key : SortedKeys(*list.row, three.before)) {
    if (list.row->find(three.after, key) == nullptr) {
      entry(list, key, three);
    }
  }
  for (const void* const key : SortedKeys(*list.row, three.after)) {
    entry(list, key, three);
  }
}

/// An entry, or a container that is there or not.
void TreeComparison::entry(const Node& node, const void* key, const Three& three) {
  const void* const before = node.row->find(three.before, key);
  const void* const after = node.row->find(three.after, key);
  const void* const running = findIn(three.running, node, key);
  const auto step = [&] {
    return OwnedStep{&node, key == nullptr ? nullptr : copyOf(node.row->key(), key)};
  };
  if (after == nullptr) {
    if (before != nullptr && running != nullptr) {
      change_.deletes.push_back(path_);
      change_.deletes.back().push_back(step());
    }
    return;
  }
  const bool isEntity = node.kind == Kind::list || node.kind == Kind::presence;
  if (isEntity && before != nullptr && running != nullptr) {
    path_.push_back(step());
    members(node, {*entity(before), *entity(after), entity(running)});
    path_.pop_back();
  } else if (!sameEntry(node, before, after) && !sameEntry(node, running, after)) {
    const OwnedStep whole = step();
    changed(whole, datumOf(node, whole.key, after));
  }
}

void TreeComparison::changed(const OwnedStep& step, Datum value) {
  Edit& edit = change_.updates.emplace_back(Edit{path_, std::move(value)});
  edit.path.push_back(step);
}

}  // namespace Host
