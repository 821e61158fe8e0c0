#pragma once

#include <string>
#include <vector>

#include "Kel/Observer.h"
#include "Kel/ValueType.h"

namespace Kel {

/// Writes down the notifications of one entity as "<attribute> <key>".
class Notes {
 public:
  template <class Entity>
  explicit Notes(const Entity& entity)
      : observer_(entity, [this, &entity](AttrId id, const void* key) {
          const Row& row = *entity.fwkType().descriptor().row(id);
          taken_.emplace_back(row.name);
          if (key != nullptr) {
            row.key().append(taken_.back() += " ", key);
          }
        }) {}

  /// The notifications since the last call.
  std::vector<std::string> take() { return std::exchange(taken_, {}); }

 private:
  std::vector<std::string> taken_;
  Observer observer_;
};
using Noted = std::vector<std::string>;

}  // namespace Kel
