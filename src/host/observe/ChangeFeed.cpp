#include "observe/ChangeFeed.h"

#include "text/Concat.h"

namespace Host {

std::string ChangeFeed::whyNot(const TreePath& path) {
  if (path.empty()) {
    return {};
  }
  const Node& node = *path.back().node;
  const std::string where = pathOf(stepsOf(path));
  if (!Observation::isWritten(node)) {
    return concat({"nothing can be watched at ", where,
                   ": it is not the translation that writes it; watch version 2 or the "
                   "convergence flags of the monitor's records"});
  }
  return node.isKey() ? concat({"a key never changes: watch the entry instead of ", where}) : "";
}

void ChangeFeed::add(EventReceiver& receiver, const TreePath& path) {
  auto& observation = observations_[pathOf(stepsOf(path))];
  if (observation == nullptr) {
    observation = std::make_unique<Observation>(trees_, path);
  }
  observation->add(receiver);
  observation->tellAll(receiver);
}

void ChangeFeed::remove(EventReceiver& receiver) {
  std::erase_if(observations_, [&](const auto& each) {
    each.second->remove(receiver);
    return each.second->empty();
  });
}

std::size_t ChangeFeed::objects() const {
  std::size_t objects = 0;
  for (const auto& [path, observation] : observations_) {
    objects += observation->objects();
  }
  return objects;
}

}  // namespace Host
