#include "observe/WatchedObject.h"

#include <algorithm>

#include "data/SortedKeys.h"
#include "text/Concat.h"
#include "text/JsonWriter.h"

namespace Host {
namespace {

using Kind = Event::Kind;

std::string stepTo(const Node& child, const void* key) {
  const Step step{&child, key};
  return pathOf({&step, 1}).substr(1);
}

Brix::Publisher publisherOf(const Kel::PtrInterface& object) {
  return object.fwkType().descriptor().publisher(object);
}

/// The leaf as JSON; empty when it was never set.
std::string jsonOf(const Node& leaf, const Kel::PtrInterface& object) {
  const void* const value = leaf.row->find(object, nullptr);
  if (leaf.type->absent(value)) {
    return {};
  }
  TextSink sink;
  JsonWriter json(sink, Layout::compact);
  json.value(*leaf.type, value);
  json.endLine();
  return sink.text().substr(0, sink.text().size() - 1);
}

}  // namespace

WatchedObject::WatchedObject(Observation& owner, const WatchedObject* parent, const Node& node,
                             std::string step, const Kel::PtrInterface& object)
    : Subscriber(&WatchedObject::notify),
      owner_(owner),
      parent_(parent),
      node_(node),
      step_(std::move(step)),
      depth_(parent == nullptr ? 1 : parent->depth_ + 1),
      object_(&object) {
  publisherOf(*object_).subscriberAdd(*this);
  ++owner_.objects_;
  for (const Node* const child : node_.children) {
    follow(*child);
  }
}

WatchedObject::~WatchedObject() {
  publisherOf(*object_).subscriberRemove(*this);
  --owner_.objects_;
}

/// Whether this child, or this entry of it (null: any), lies on the way to the path or behind it.
bool WatchedObject::isFollowed(const Node& child, const void* key) const {
  const OwnedStep* const step = next();
  if (step == nullptr) {
    return !child.isKey() && Observation::isWritten(child);
  }
  return step->node == &child && (key == nullptr || step->key == nullptr ||
                                  child.row->key().compare(step->keyPlace(), key) == 0);
}

void WatchedObject::follow(const Node& child) {
  if (!isFollowed(child, nullptr)) {
    return;
  }
  if (child.kind == Node::Kind::leaf) {
    leaves_.emplace_back(&child, jsonOf(child, *object_));
  } else if (child.kind == Node::Kind::presence) {
    if (const void* const single = child.row->find(*object_, nullptr)) {
      follow(child, child.name, single);
    }
  } else if (child.kind == Node::Kind::list) {
    std::pair<WatchedObject*, const Node*> context{this, &child};
    child.row->walk(*object_, &context, [](void* at, const void* key, const void* entry) {
      const auto [self, list] = *static_cast<decltype(context)*>(at);
      if (self->isFollowed(*list, key)) {
        self->follow(*list, stepTo(*list, key), entry);
      }
    });
  }
}

WatchedObject& WatchedObject::follow(const Node& child, std::string step, const void* object) {
  auto& place = children_[step];
  place = std::make_unique<WatchedObject>(owner_, this, child, std::move(step),
                                          *static_cast<const Kel::PtrInterface*>(object));
  return *place;
}

void WatchedObject::notify(const Brix::Publisher& /*publisher*/, Subscriber& subscriber,
                           Brix::AttrId id, const void* key, const void* /*value*/) {
  auto& self = static_cast<WatchedObject&>(subscriber);
  const auto& children = self.node_.children;
  const auto at =
      std::ranges::find_if(children, [&](const Node* child) { return child->row->id == id; });
  if (at != children.end() && self.isFollowed(**at, key)) {
    self.changed(**at, key);
  }
}

// Whether something has come or gone is found out by looking: other observers may have changed the
// object again since this notification was sent.
void WatchedObject::changed(const Node& child, const void* key) {
  if (child.kind == Node::Kind::leaf) {
    leafChanged(child);
  } else if (child.isObject()) {
    objectChanged(child, key);
  } else {
    memberChanged(child, key);
  }
}

void WatchedObject::leafChanged(const Node& leaf) {
  std::string& told =
      std::ranges::find(leaves_, &leaf, [](const auto& each) { return each.first; })->second;
  std::string now = jsonOf(leaf, *object_);
  if (now != told) {
    told = std::move(now);
    owner_.tell({Kind::set, pathTo(leaf, nullptr), told});
  }
}

void WatchedObject::objectChanged(const Node& child, const void* key) {
  const std::string step = stepTo(child, key);
  const void* const now = child.row->find(*object_, key);
  const auto was = children_.find(step);
  if (was != children_.end()) {
    if (was->second->object_.get() == now) {
      return;
    }
    was->second->tellGone();
    children_.erase(was);
  }
  if (now != nullptr) {
    const WatchedObject& added = follow(child, step, now);
    for (EventReceiver* const receiver : owner_.receivers_) {
      added.tellAll(*receiver);
    }
  }
}

void WatchedObject::memberChanged(const Node& list, const void* key) {
  const bool there = list.row->find(*object_, key) != nullptr;
  owner_.tell({there ? Kind::add : Kind::remove, pathTo(list, key)});
}

void WatchedObject::tellAll(EventReceiver& receiver) const {
  if (isTold() && node_.isObject()) {
    receiver.event({Kind::add, path()});
  }
  for (const auto& [leaf, value] : leaves_) {
    if (!value.empty()) {
      receiver.event({Kind::set, pathTo(*leaf, nullptr), value});
    }
  }
  for (const Node* const child : node_.children) {
    if (child->kind != Node::Kind::leafList && child->kind != Node::Kind::records) {
      continue;
    }
    for (const void* const key : SortedKeys(*child->row, *object_)) {
      if (isFollowed(*child, nullptr) && isFollowed(*child, key)) {
        receiver.event({Kind::add, pathTo(*child, key)});
      }
    }
  }
  for (const auto& [step, child] : children_) {
    child->tellAll(receiver);
  }
}

/// This object is gone, or what is above it: all at the path of the observation goes with it.
void WatchedObject::tellGone() const {
  if (isTold()) {
    return owner_.tell({Kind::remove, path()});
  }
  for (const auto& [step, child] : children_) {
    child->tellGone();
  }
  if (depth_ + 1 == owner_.path_.size() && !next()->node->isObject()) {
    tellTargetGone();
  }
}

/// The path means a leaf or entries of a leaf-list of this object, which has gone.
void WatchedObject::tellTargetGone() const {
  const Node& target = *next()->node;
  if (target.kind == Node::Kind::leaf) {
    owner_.tell({Kind::remove, pathTo(target, nullptr)});
    return;
  }
  for (const void* const key : SortedKeys(*target.row, *object_)) {
    if (isFollowed(target, key)) {
      owner_.tell({Kind::remove, pathTo(target, key)});
    }
  }
}

std::string WatchedObject::path() const {
  return concat({parent_ == nullptr ? "" : parent_->path(), "/", step_});
}

std::string WatchedObject::pathTo(const Node& child, const void* key) const {
  return concat({path(), "/", stepTo(child, key)});
}

}  // namespace Host
