#include "framework/Kel/Model.h"

#include <array>

#include "Kel/Describe.h"

namespace Kel {
template <>
const ValueType& valueTypeOf<Model::Rank>() {
  static const ValueType type = describeValue<Model::Rank>("Model::Rank", Encoding::number);
  return type;
}
}  // namespace Kel

namespace Model {

void kelAppend(std::string& out, Rank rank) { Kel::appendValue(out, rank.value); }
bool kelParse(std::string_view text, Rank& rank, std::string& why) {
  return Kel::parseValue(text, rank.value, why);
}

const Kel::Module& kelModule(Type /*type*/) {
  static constexpr std::array<Kel::Module::TypeFunction, 5> kTypes{
      &Kel::describe<Leaf>, &Kel::describe<Part>, &Kel::describe<Step>, &Kel::describe<Whole>,
      &Kel::describe<Twin>};
  static constexpr Kel::Module kModule{"Model", kTypes};
  return kModule;
}

}  // namespace Model
