#pragma once

#include <cstddef>
#include <vector>

#include "Kel/PtrInterface.h"
#include "Kel/ValueType.h"

namespace Host {

/// The keys of a set or map, copied and sorted by their type's order. A walk hands out keys that
/// are good for one step only, so they have to be copied to be sorted.
class SortedKeys {
 public:
  SortedKeys(const Kel::Row& row, const Kel::PtrInterface& object);
  ~SortedKeys();
  SortedKeys(const SortedKeys&) = delete;
  SortedKeys& operator=(const SortedKeys&) = delete;

  std::vector<const void*>::const_iterator begin() const { return sorted_.begin(); }
  std::vector<const void*>::const_iterator end() const { return sorted_.end(); }

 private:
  void add(const void* key);
  void sort();

  const Kel::ValueType& type_;
  std::size_t stride_;
  std::vector<std::max_align_t> places_;
  std::vector<const void*> sorted_;
};

}  // namespace Host
