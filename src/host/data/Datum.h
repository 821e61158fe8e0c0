#pragma once

#include <vector>

#include "data/TreePath.h"

namespace Host {

/// A piece of data that a change line brings: everything in it has been read and checked.
///
/// A container has its members as parts, a list its entries, an entry its members without the
/// keys. A member of a leaf-list and a record have a key alone, a leaf a value alone, a pair of a
/// mapping both (no value: none was given).
struct Datum {
  const Node* node = nullptr;
  OwnedValue key = nullptr;
  OwnedValue value = nullptr;
  std::vector<Datum> parts = {};

  const void* keyPlace() const { return key == nullptr ? nullptr : key->get(); }
  const void* valuePlace() const { return value == nullptr ? nullptr : value->get(); }
};

}  // namespace Host
