#pragma once

#include <memory>
#include <string>
#include <vector>

#include "data/DataPath.h"

namespace Host {

/// A value of its own, shared by all that speak of it.
using OwnedValue = std::shared_ptr<const Kel::AnyValue>;

/// A copy of a value of this type.
OwnedValue copyOf(const Kel::ValueType& type, const void* value);

/// One step of a path that keeps its key.
struct OwnedStep {
  const Node* node;
  OwnedValue key = nullptr;  ///< null: no entry is meant, or the whole list

  const void* keyPlace() const { return key == nullptr ? nullptr : key->get(); }
};

/// The way from a container at the top to a node of the data tree, all keys read and checked.
using TreePath = std::vector<OwnedStep>;

std::vector<Step> stepsOf(const TreePath& path);

/// The part of pathOf that belongs to one step: rule[priority='20000'].
std::string textOf(const OwnedStep& step);

}  // namespace Host
