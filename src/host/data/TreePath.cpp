#include "data/TreePath.h"

namespace Host {

OwnedValue copyOf(const Kel::ValueType& type, const void* value) {
  auto copy = std::make_shared<Kel::AnyValue>(type);
  type.assign(copy->get(), value);
  return copy;
}

std::vector<Step> stepsOf(const TreePath& path) {
  std::vector<Step> steps;
  steps.reserve(path.size());
  for (const OwnedStep& step : path) {
    steps.push_back({step.node, step.keyPlace()});
  }
  return steps;
}

std::string textOf(const OwnedStep& step) {
  const Step plain{step.node, step.keyPlace()};
  return pathOf({&plain, 1}).substr(1);
}

}  // namespace Host
