#pragma once

#include "data/TreePath.h"

namespace Host {

// What stands for what in the other generation.

/// The node of version 2 that is made from this one of version 1; null: from this none is.
const Node* madeFrom(const Node& node1);
/// The node of version 1 that this one of version 2 is made from; null: from none.
const Node* sourceOf(const Node& node2);

/// The same key as the other generation has it; null when it cannot have it.
OwnedValue sameKey(const Kel::ValueType& from, const void* key, const Kel::ValueType& to);

/// What the row of an attribute that holds objects has found.
inline const Kel::PtrInterface* asObject(const void* found) {
  return static_cast<const Kel::PtrInterface*>(found);
}

/// A value as text.
std::string valueText(const Kel::ValueType& type, const void* value);
/// What tells an entry from its siblings, as text: "fw1", "443, 6".
std::string keyText(const Node& node, const void* key);

}  // namespace Host
