#include "observe/Observation.h"

#include <algorithm>

#include "observe/WatchedObject.h"

namespace Host {

Observation::Observation(const Trees& trees, const TreePath& path) : path_(path) {
  for (const Node* const top : Schema::instance().tops()) {
    if (isWritten(*top) && (path_.empty() || path_.front().node == top)) {
      tops_.push_back(std::make_unique<WatchedObject>(*this, nullptr, *top, qualifiedName(*top),
                                                      top->top->root(trees)));
    }
  }
}

Observation::~Observation() = default;

void Observation::tellAll(EventReceiver& receiver) const {
  for (const auto& top : tops_) {
    top->tellAll(receiver);
  }
}

bool Observation::isWritten(const Node& node) {
  return node.state ||
         std::ranges::any_of(node.children, [](const Node* child) { return isWritten(*child); });
}

}  // namespace Host
