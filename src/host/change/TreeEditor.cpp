#include "change/TreeEditor.h"

#include <algorithm>

#include "data/SortedKeys.h"

namespace Host {
namespace {

bool isScalar(const Node& node) { return node.kind == Node::Kind::leaf; }
bool isObject(const Node& node) {
  return node.kind == Node::Kind::list || node.kind == Node::Kind::presence ||
         node.kind == Node::Kind::container;
}

/// A leaf whose value is never taken away: see TreeEditor.
bool isSignal(const Node& leaf) {
  return leaf.parent != nullptr && Touched::signalOf(*leaf.parent) == &leaf;
}

bool isWholeList(const Datum& datum) {
  return datum.key == nullptr && (datum.node->kind == Node::Kind::list || !isObject(*datum.node)) &&
         !isScalar(*datum.node);
}

}  // namespace

void TreeEditor::edit(const Change& change) {
  for (const TreePath& path : change.deletes) {
    erase(path);
  }
  for (const Edit& each : change.replaces) {
    replace(each);
  }
  for (const Edit& each : change.updates) {
    update(each);
  }
}

void TreeEditor::update(const Edit& edit) {
  const std::span<const OwnedStep> steps = edit.path;
  cursor_.make(steps.first(steps.size() - 1));
  fill(edit.value);
}

/// Merges `datum` in at this place.
void TreeEditor::fill(const Datum& datum) {
  const Node& node = *datum.node;
  if (isScalar(node)) {
    cursor_.put(node, nullptr, datum.valuePlace());
  } else if (isWholeList(datum)) {
    for (const Datum& entry : datum.parts) {
      fill(entry);
    }
  } else if (isObject(node)) {
    cursor_.create(node, datum.keyPlace());
    for (const Datum& part : datum.parts) {
      fill(part);
    }
    cursor_.leave();
  } else if (datum.value != nullptr) {
    cursor_.put(node, datum.keyPlace(), datum.valuePlace());
  } else if (cursor_.find(node, datum.keyPlace()) == nullptr) {
    const bool pair = node.kind == Node::Kind::mapping;
    const Kel::AnyValue none(pair ? node.row->value() : node.row->key());
    cursor_.put(node, datum.keyPlace(), pair ? none.get() : nullptr);
  }
}

void TreeEditor::replace(const Edit& edit) {
  const std::span<const OwnedStep> steps = edit.path;
  cursor_.make(steps.first(steps.size() - 1));
  settle(edit.value);
}

/// Makes what is at this place equal to `datum`.
void TreeEditor::settle(const Datum& datum) {
  const Node& node = *datum.node;
  if (isScalar(node)) {
    const void* const now = cursor_.find(node, nullptr);
    if (node.type->absent(now) || node.type->compare(now, datum.valuePlace()) != 0) {
      cursor_.put(node, nullptr, datum.valuePlace());
    }
  } else if (isWholeList(datum)) {
    settleEntries(datum);
  } else if (node.kind == Node::Kind::mapping) {
    settlePair(datum);
  } else if (isObject(node) && cursor_.enter(node, datum.keyPlace())) {
    settleMembers(node, datum.parts);
    cursor_.leave();
  } else {
    fill(datum);
  }
}

void TreeEditor::settleMembers(const Node& node, const std::vector<Datum>& parts) {
  for (const Node* const child : node.children) {
    if (child->isKey() || child->state) {
      continue;
    }
    const auto part = std::ranges::find(parts, child, &Datum::node);
    if (part != parts.end()) {
      settle(*part);
    } else if (!isSignal(*child)) {
      clear(*child);
    }
  }
}

void TreeEditor::settleEntries(const Datum& list) {
  const Node& node = *list.node;
  const Kel::ValueType& type = node.row->key();
  std::vector<const void*> wanted;
  wanted.reserve(list.parts.size());
  for (const Datum& entry : list.parts) {
    wanted.push_back(entry.keyPlace());
  }
  const auto below = [&](const void* a, const void* b) { return type.compare(a, b) < 0; };
  std::ranges::sort(wanted, below);
  for (const void* const key : SortedKeys(*node.row, cursor_.object())) {
    if (!std::ranges::binary_search(wanted, key, below)) {
      cursor_.erase(node, key);
    }
  }
  for (const Datum& entry : list.parts) {
    settle(entry);
  }
}

void TreeEditor::settlePair(const Datum& pair) {
  const Kel::ValueType& type = pair.node->row->value();
  const Kel::AnyValue none(type);
  const void* const wanted = pair.value == nullptr ? none.get() : pair.valuePlace();
  const void* const now = cursor_.find(*pair.node, pair.keyPlace());
  if (now == nullptr || type.compare(now, wanted) != 0) {
    cursor_.put(*pair.node, pair.keyPlace(), wanted);
  }
}

/// Takes away what a value leaves out.
void TreeEditor::clear(const Node& child) {
  if (isScalar(child)) {
    const Kel::AnyValue none(*child.type);
    if (child.type->compare(cursor_.find(child, nullptr), none.get()) != 0) {
      cursor_.put(child, nullptr, none.get());
    }
  } else if (child.kind != Node::Kind::presence) {
    clearEntries(child);
  } else if (cursor_.find(child, nullptr) != nullptr) {
    cursor_.erase(child, nullptr);
  }
}

void TreeEditor::clearEntries(const Node& list) {
  for (const void* const key : SortedKeys(*list.row, cursor_.object())) {
    cursor_.erase(list, key);
  }
}

void TreeEditor::erase(const TreePath& path) {
  const std::span<const OwnedStep> steps = path;
  const OwnedStep& last = steps.back();
  const Node& node = *last.node;
  if (isScalar(node)) {
    return eraseLeaf(steps);
  }
  if (!cursor_.go(steps.first(node.parent == nullptr ? 1 : steps.size() - 1))) {
    return;
  }
  if (node.kind == Node::Kind::container) {
    for (const Node* const child : node.children) {
      clearEntries(*child);
    }
  } else if (last.key == nullptr && node.kind != Node::Kind::presence) {
    clearEntries(node);
  } else {
    cursor_.erase(node, last.keyPlace());
  }
}

void TreeEditor::eraseLeaf(std::span<const OwnedStep> steps) {
  const Node& leaf = *steps.back().node;
  const Kel::AnyValue none(*leaf.type);
  const OwnedStep& above = steps[steps.size() - 2];
  if (above.node->kind == Node::Kind::mapping) {
    if (cursor_.go(steps.first(steps.size() - 2))) {
      cursor_.put(*above.node, above.keyPlace(), none.get());
    }
  } else if (cursor_.go(steps.first(steps.size() - 1))) {
    cursor_.put(leaf, nullptr, none.get());
  }
}

void TreeEditor::notify(const TreePath& path) {
  std::span<const OwnedStep> steps = path;
  if (steps.back().node->row == nullptr) {
    steps = steps.first(steps.size() - 1);  // the value of a pair is announced with its key
  }
  const OwnedStep& last = steps.back();
  if (!cursor_.go(steps.first(steps.size() - 1))) {
    return;
  }
  const Datum meant{last.node, last.key};
  if (!isWholeList(meant)) {
    return cursor_.publish(*last.node, last.keyPlace());
  }
  for (const void* const key : SortedKeys(*last.node->row, cursor_.object())) {
    cursor_.publish(*last.node, key);
  }
}

void TreeEditor::signal(const Touched& touched, Kel::Seconds time) {
  for (const TreePath& entry : touched) {
    if (cursor_.go(entry)) {
      cursor_.put(*Touched::signalOf(*entry.back().node), nullptr, &time);
    }
  }
}

}  // namespace Host
