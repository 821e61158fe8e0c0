#include "data/SortedKeys.h"

#include <stdlib.h>  // NOLINT(modernize-deprecated-headers): qsort_r is not in <cstdlib>

#include <algorithm>

namespace Host {

SortedKeys::SortedKeys(const Kel::Row& row, const Kel::PtrInterface& object) : type_(row.key()) {
  const std::size_t size = row.size(object);
  stride_ = (type_.size + type_.align - 1U) / type_.align * type_.align;
  places_.resize((size * stride_ + sizeof(std::max_align_t) - 1) / sizeof(std::max_align_t));
  sorted_.reserve(size);
  row.walk(object, this, [](void* self, const void* key, const void* /*value*/) {
    static_cast<SortedKeys*>(self)->add(key);
  });
  sort();
}

void SortedKeys::sort() {
  const auto below = [this](const void* a, const void* b) { return type_.compare(a, b) < 0; };
  if (std::is_sorted(sorted_.begin(), sorted_.end(), below)) {
    return;
  }
  if (!type_.trivial) {
    std::sort(sorted_.begin(), sorted_.end(), below);
    return;
  }
  // The keys themselves change places: that is kinder to the caches than to follow pointers. After
  // it the pointers, which are in the order of the places, are in the order of the keys.
  ::qsort_r(
      places_.data(), sorted_.size(), stride_,
      [](const void* a, const void* b, void* type) {
        return static_cast<const Kel::ValueType*>(type)->compare(a, b);
      },
      const_cast<Kel::ValueType*>(&type_));
}

SortedKeys::~SortedKeys() {
  for (std::byte* at = reinterpret_cast<std::byte*>(places_.data()); !sorted_.empty();
       at += stride_) {
    type_.destroy(at);
    sorted_.pop_back();
  }
}

void SortedKeys::add(const void* key) {
  void* const place = reinterpret_cast<std::byte*>(places_.data()) + sorted_.size() * stride_;
  type_.construct(place);
  type_.assign(place, key);
  sorted_.push_back(place);
}

}  // namespace Host
