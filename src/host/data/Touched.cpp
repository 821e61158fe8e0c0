#include "data/Touched.h"

#include <algorithm>

namespace Host {
namespace {

std::ptrdiff_t orderOf(const Node* top) {
  const auto& tops = Schema::instance().tops();
  return std::ranges::find(tops, top) - tops.begin();
}

}  // namespace

const Node* Touched::signalOf(const Node& list) {
  if (list.kind != Node::Kind::list || list.state) {
    return nullptr;
  }
  std::size_t hint = list.children.size() - 1;
  return list.child("timestamp", hint);
}

bool Touched::Below::operator()(const TreePath& a, const TreePath& b) const {
  if (a.front().node != b.front().node) {
    return orderOf(a.front().node) < orderOf(b.front().node);
  }
  // Below one top, all of these entries have the same nodes on their way.
  for (std::size_t i = 1; i < std::min(a.size(), b.size()); ++i) {
    const int order = a[i].node->row->key().compare(a[i].keyPlace(), b[i].keyPlace());
    if (order != 0) {
      return order < 0;
    }
  }
  return a.size() < b.size();
}

}  // namespace Host
