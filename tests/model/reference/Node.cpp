#include "model/reference/Node.h"

#include <exception>

namespace Reference {

void Publisher::add(Subscriber& subscriber) {
  for (const auto& [known, number] : subscribers_) {
    if (known == &subscriber) {
      return;
    }
  }
  subscribers_.emplace_back(&subscriber, next_++);
}

void Publisher::remove(Subscriber& subscriber) {
  std::erase_if(subscribers_, [&](const auto& each) { return each.first == &subscriber; });
}

void Publisher::publish(int id, const Text& key) const {
  const auto round = subscribers_;
  std::exception_ptr first;
  for (const auto& each : round) {
    if (std::find(subscribers_.begin(), subscribers_.end(), each) == subscribers_.end()) {
      continue;
    }
    try {
      each.first->notify(id, key);
    } catch (...) {
      first = first ? first : std::current_exception();
    }
  }
  if (first) {
    std::rethrow_exception(first);
  }
}

const Attribute& NodeType::attribute(int id) const {
  return *std::find_if(attributes.begin(), attributes.end(),
                       [id](const Attribute& each) { return each.id == id; });
}

bool NodeType::has(int id) const {
  return std::any_of(attributes.begin(), attributes.end(),
                     [id](const Attribute& each) { return each.id == id; });
}

Node::Node(World& world, const NodeType& type_, Text key_)
    : type(type_), key(std::move(key_)), world_(world) {
  for (const Attribute& each : type.attributes) {
    switch (each.kind) {
      case Kind::value:
        values_[each.id] = each.initial;
        break;
      case Kind::members:
        members_.try_emplace(each.id);
        break;
      case Kind::names:
        break;
      case Kind::entries:
      case Kind::single:
        entries_.try_emplace(each.id, type.order);
        break;
    }
  }
}

void Node::write(int id, const Text& value) {
  values_.at(id) = value;
  publish(id);
}

bool Node::has(int id, const Text& key_) const {
  return type.attribute(id).kind == Kind::names ? names_.contains(key_) : members_.at(id).has(key_);
}

void Node::insert(int id, const Text& key_) {
  if (!has(id, key_)) {
    members_.at(id).insert(key_, true);
    publish(id, key_);
  }
}

void Node::erase(int id, const Text& key_) {
  const Text gone = key_;
  if (type.attribute(id).kind == Kind::names ? names_.erase(gone) != 0
                                             : members_.at(id).take(gone).has_value()) {
    publish(id, gone);
  }
}

Text Node::name(const Text& key_) const {
  const auto found = names_.find(key_);
  return found == names_.end() ? Text() : found->second;
}

void Node::nameIs(int id, const Text& key_, const Text& name) {
  names_[key_] = name;
  publish(id, key_);
}

NodePtr Node::entry(int id, const Text& key_) const {
  const NodePtr* const found = entries_.at(id).find(key_);
  return found == nullptr ? nullptr : *found;
}

NodePtr Node::entryIs(int id, const Text& key_) {
  if (NodePtr there = entry(id, key_)) {
    return there;
  }
  const NodePtr made = std::make_shared<Node>(world_, *type.attribute(id).below, key_);
  entries_.at(id).insert(key_, made);
  publish(id, key_);
  return made;
}

void Node::entryDel(int id, const Text& key_) {
  if (const auto gone = entries_.at(id).take(key_)) {
    publish(id, (*gone)->key);
  }
}

void Node::entryDelAll(int id) {
  for (Collection<NodePtr>::Walk walk(entries_.at(id)); walk.next();) {
    entryDel(id, walk.key);
  }
}

void Node::clear(int id) {
  switch (type.attribute(id).kind) {
    case Kind::value:
      break;
    case Kind::members:
      for (Collection<bool>::Walk walk(members_.at(id)); walk.next();) {
        erase(id, walk.key);
      }
      break;
    case Kind::names:
      for (auto at = names_.begin(); at != names_.end();) {
        const Text name = at->first;
        erase(id, name);
        at = names_.upper_bound(name);
      }
      break;
    case Kind::entries:
    case Kind::single:
      entryDelAll(id);
      break;
  }
}

void Node::publish(int id, const Text& key_) {
  const NodePtr keep = shared_from_this();
  if (world_.journal && type.journaled) {
    world_.line(Text("! ") + type.name + " " + key + " " + std::to_string(id) + " " + key_);
  }
  publisher.publish(id, key_);
}

}  // namespace Reference
