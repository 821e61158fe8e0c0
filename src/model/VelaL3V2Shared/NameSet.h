#pragma once

#include <cstdint>
#include <map>

#include "Kel/Text.h"

namespace [[using gnu: visibility("default")]] VelaL3V2Shared {

/// The components of a compound name, by index. Indices need not be contiguous; a missing component
/// reads as the empty text, and reading it does not make it.
class NameSet {
 public:
  using Index = std::uint32_t;  ///< of a component; 0 is the device itself
  using const_iterator = std::map<Index, Kel::String>::const_iterator;

  /// Inserts or replaces the component at `index`.
  void nameIs(Index index, const Kel::String& name) { names_.insert_or_assign(index, name); }
  /// The component at `index`, or the empty text.
  Kel::String name(Index index) const {
    const auto at = names_.find(index);
    return at == names_.end() ? Kel::String() : at->second;
  }

  std::size_t size() const noexcept { return names_.size(); }
  bool empty() const noexcept { return names_.empty(); }
  /// In ascending order of the indices.
  const_iterator begin() const noexcept { return names_.begin(); }
  const_iterator end() const noexcept { return names_.end(); }

  bool operator==(const NameSet&) const = default;

 private:
  std::map<Index, Kel::String> names_;
};

}  // namespace VelaL3V2Shared
