#include "host/SortedKeys.h"

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
  const auto below = [this](const void* a, const void* b) { return type_.compare(a, b) < 0; };
  if (!std::is_sorted(sorted_.begin(), sorted_.end(), below)) {
    std::sort(sorted_.begin(), sorted_.end(), below);
  }
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
