#include "audit/SubtreeAudit.h"

#include <iterator>

#include "data/SortedKeys.h"
#include "text/Concat.h"

namespace Host {
namespace {

using Kind = Difference::Kind;

std::string textOf(const Kel::ValueType& type, const void* value) {
  std::string text;
  type.append(text, value);
  return text;
}

const void* keyOf(const Node& node, const Kel::PtrInterface& entry) {
  return node.kind == Node::Kind::list ? node.children.front()->row->find(entry, nullptr) : nullptr;
}

/// The node of version 1 that `node2` is made from; null: from none.
const Node* sourceOf(const Node& node1, const Node& node2) {
  std::size_t hint = 0;
  return node1.child(node2.name == "log-enabled" ? "log" : node2.name, hint);
}

}  // namespace

const Node& childOf(const Node& node, std::string_view name) {
  std::size_t hint = 0;
  return *node.child(name, hint);
}

std::string leafText(const Node& leaf, const Kel::PtrInterface& object) {
  return textOf(*leaf.type, leaf.row->find(object, nullptr));
}

SubtreeAudit::Entries SubtreeAudit::entriesOf(const Node& list, const Kel::PtrInterface& object) {
  struct Context {
    const Node& list;
    Entries entries;
  } context{list, {}};
  list.row->walk(object, &context, [](void* at, const void* key, const void* entry) {
    auto& [node, entries] = *static_cast<Context*>(at);
    entries.emplace(textOf(node.row->key(), key), static_cast<const Kel::PtrInterface*>(entry));
  });
  return std::move(context.entries);
}

void SubtreeAudit::enter(const Node& node1, const Kel::PtrInterface* object1, const Node& node2,
                         const Kel::PtrInterface* object2) {
  steps1_.push_back({&node1, object1 == nullptr ? nullptr : keyOf(node1, *object1)});
  steps2_.push_back({&node2, object2 == nullptr ? nullptr : keyOf(node2, *object2)});
}

void SubtreeAudit::leave() {
  steps1_.pop_back();
  steps2_.pop_back();
}

void SubtreeAudit::excuse(Kind kind, std::string why) {
  excuseKind_ = kind;
  excuse_ = std::move(why);
}

void SubtreeAudit::add(Kind kind, std::string why, const std::vector<Step>& steps) {
  if (!excuse_.empty() && isAlarming(kind)) {
    kind = excuseKind_;
    why = concat({why, "; ", excuse_});
  }
  differences_.push_back({pathOf(steps), std::move(why), kind});
}

void SubtreeAudit::members(const Node& node1, const Kel::PtrInterface& object1, const Node& node2,
                           const Kel::PtrInterface& object2) {
  for (const Node* const child2 : node2.children) {
    const Node* const child1 = sourceOf(node1, *child2);
    // What has no source, or is a signal, is no copy.
    if (child2->isKey() || child1 == nullptr || child2->name == "timestamp" || child1->isKey()) {
      continue;
    }
    if (child2->kind == Node::Kind::leaf) {
      leaf(*child1, object1, *child2, object2);
    } else if (child2->kind == Node::Kind::presence) {
      single(*child1, object1, *child2, object2);
    } else if (child2->kind == Node::Kind::list) {
      entries(*child1, object1, *child2, object2);
    } else {
      keys(*child1, object1, *child2, object2);
    }
  }
}

void SubtreeAudit::leaf(const Node& leaf1, const Kel::PtrInterface& object1, const Node& leaf2,
                        const Kel::PtrInterface& object2) {
  const std::string value1 = leafText(leaf1, object1);
  const std::string value2 = leafText(leaf2, object2);
  if (value1 != value2) {
    enter(leaf1, nullptr, leaf2, nullptr);
    at2(Kind::defect, concat({"version 2 has \"", value2, "\", version 1 has \"", value1, "\""}));
    leave();
  }
}

void SubtreeAudit::single(const Node& node1, const Kel::PtrInterface& object1, const Node& node2,
                          const Kel::PtrInterface& object2) {
  const auto* const single1 =
      static_cast<const Kel::PtrInterface*>(node1.row->find(object1, nullptr));
  const auto* const single2 =
      static_cast<const Kel::PtrInterface*>(node2.row->find(object2, nullptr));
  enter(node1, single1, node2, single2);
  if (single1 != nullptr && single2 != nullptr) {
    members(node1, *single1, node2, *single2);
  } else if (single1 != nullptr) {
    at1(Kind::defect, concat({"this ", node1.name, " is missing in version 2"}));
  } else if (single2 != nullptr) {
    at2(Kind::asDesigned, concat({"version 1 has no ", node1.name,
                                  " any more; that of version 2 outlives it until its origin goes "
                                  "or the tree is cleaned up"}));
  }
  leave();
}

void SubtreeAudit::entries(const Node& node1, const Kel::PtrInterface& object1, const Node& node2,
                           const Kel::PtrInterface& object2) {
  const Entries all1 = entriesOf(node1, object1);
  const Entries all2 = entriesOf(node2, object2);
  for (const auto& [key, entry1] : all1) {
    const auto at = all2.find(key);
    enter(node1, entry1, node2, at == all2.end() ? nullptr : at->second);
    if (at == all2.end()) {
      at1(Kind::defect, concat({"this entry of ", node1.name, " is missing in version 2"}));
    } else {
      members(node1, *entry1, node2, *at->second);
    }
    leave();
  }
  for (const auto& [key, entry2] : all2) {
    if (!all1.contains(key)) {
      enter(node1, nullptr, node2, entry2);
      at2(Kind::foreign, concat({"version 1 has no such entry of ", node1.name}));
      leave();
    }
  }
}

void SubtreeAudit::keys(const Node& node1, const Kel::PtrInterface& object1, const Node& node2,
                        const Kel::PtrInterface& object2) {
  const SortedKeys all1(*node1.row, object1);
  const SortedKeys all2(*node2.row, object2);
  // Both are sorted alike; the types differ, the texts do not.
  std::map<std::string, const void*> missing;
  for (const void* const key : all1) {
    missing.emplace(textOf(*node1.type, key), key);
  }
  std::map<std::string, const void*> extra;
  for (const void* const key : all2) {
    std::string text = textOf(*node2.type, key);
    if (missing.erase(text) == 0) {
      extra.emplace(std::move(text), key);
    }
  }
  enter(node1, nullptr, node2, nullptr);
  for (const auto& [text, key] : missing) {
    steps1_.back().key = key;
    at1(Kind::defect, concat({"this ", node1.name, " is missing in version 2"}));
  }
  for (const auto& [text, key] : extra) {
    steps2_.back().key = key;
    at2(Kind::foreign, concat({"version 1 has no such ", node1.name}));
  }
  leave();
}

}  // namespace Host
