#include "Kel/TypeDescriptor.h"

#include <algorithm>
#include <array>

namespace Kel {

const char* nameOf(RowKind kind) {
  static constexpr std::array<const char*, 9> kNames{
      "constant", "value", "set", "map", "entries", "single", "object", "input", "children"};
  return kNames[static_cast<std::size_t>(kind)];
}

const Row* TypeDescriptor::row(std::string_view name_) const {
  const auto at = std::ranges::find_if(rows, [&](const Row& row) { return row.name == name_; });
  return at == rows.end() ? nullptr : &*at;
}

const Row* TypeDescriptor::row(Brix::AttrId id) const {
  const auto at = std::ranges::lower_bound(rows, id, {}, &Row::id);
  return at == rows.end() || at->id != id ? nullptr : &*at;
}

}  // namespace Kel
