#include "change/Forecast.h"

namespace Host {
namespace {

bool isWholeList(const OwnedStep& step) {
  const Node::Kind kind = step.node->kind;
  return step.key == nullptr && (kind == Node::Kind::list || kind == Node::Kind::records ||
                                 kind == Node::Kind::mapping || kind == Node::Kind::leafList);
}

std::string keyText(const OwnedStep& step) {
  std::string text;
  step.node->row->key().append(text, step.keyPlace());
  return text;
}

}  // namespace

/// A list is one level, its entries are the next one.
Forecast::Known& Forecast::reach(Known& from, const OwnedStep& step) {
  Known& named = from.below[qualifiedName(*step.node)];
  if (from.emptied) {
    named.emptied = true;
    named.there = named.there.value_or(false);
  }
  if (step.key == nullptr) {
    return named;
  }
  Known& entry = named.below[keyText(step)];
  if (named.emptied) {
    entry.emptied = true;
    entry.there = entry.there.value_or(false);
  }
  return entry;
}

bool Forecast::exists(const TreePath& path) {
  if (root_.below.empty()) {
    return inTrees(path);
  }
  Known* known = &root_;
  for (const OwnedStep& step : path) {
    known = &reach(*known, step);
    if (known->there == false && !isWholeList(step)) {
      return false;
    }
  }
  if (isWholeList(path.back())) {
    return !known->emptied && hasEntries(path, known->erased);
  }
  return known->there == true || (!known->emptied && inTrees(path));
}

bool Forecast::objectExists(const TreePath& path) {
  TreePath object = path;
  object.pop_back();
  if (path.back().node->row == nullptr) {
    object.pop_back();  // the value of a pair belongs to the object that has the mapping
  }
  return object.size() == 1 || exists(object);
}

void Forecast::erased(const TreePath& path) {
  Known* known = &root_;
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    known = &reach(*known, path[i]);
  }
  Known& gone = reach(*known, path.back());
  gone = Known{false, true};
  if (path.back().key != nullptr) {
    ++known->below[qualifiedName(*path.back().node)].erased;
  }
}

void Forecast::written(const Edit& edit, bool replaced) {
  Known* known = &root_;
  for (const OwnedStep& step : edit.path) {
    known = &reach(*known, step);
    known->there = true;
  }
  if (replaced) {
    *known = Known{true, true};
  }
  note(*known, edit.value);
}

void Forecast::note(Known& known, const Datum& datum) {
  for (const Datum& part : datum.parts) {
    const bool entry = isWholeList({datum.node, datum.key});
    Known& below =
        entry ? known.below[keyText({part.node, part.key})] : reach(known, {part.node, part.key});
    below.there = true;
    below.emptied = below.emptied || known.emptied;
    note(below, part);
  }
}

bool Forecast::inTrees(const TreePath& path) {
  const std::span<const OwnedStep> steps = path;
  const OwnedStep& last = steps.back();
  const Node& node = *last.node;
  if (node.top != nullptr || isWholeList(last)) {
    return hasEntries(path, 0);
  }
  const bool ofPair = node.row == nullptr;  // the value leaf of a mapping
  if (!cursor_.go(steps.first(steps.size() - (ofPair ? 2 : 1)))) {
    return false;
  }
  if (ofPair) {
    const OwnedStep& pair = steps[steps.size() - 2];
    const void* const value = cursor_.find(*pair.node, pair.keyPlace());
    const Kel::AnyValue none(*node.type);
    return value != nullptr && node.type->compare(value, none.get()) != 0;
  }
  const void* const found = cursor_.find(node, last.keyPlace());
  return node.kind == Node::Kind::leaf ? !node.type->absent(found) : found != nullptr;
}

/// Whether a list, or any list of a container at the top, has more than `erased` entries.
bool Forecast::hasEntries(const TreePath& path, std::size_t erased) {
  const std::span<const OwnedStep> steps = path;
  const Node& node = *steps.back().node;
  if (node.top == nullptr) {
    return cursor_.go(steps.first(steps.size() - 1)) && cursor_.size(node) > erased;
  }
  cursor_.go(steps);
  for (const Node* const list : node.children) {
    if (cursor_.size(*list) != 0) {
      return true;
    }
  }
  return false;
}

}  // namespace Host
