#include "document/DocumentWalk.h"

#include <algorithm>
#include <utility>

#include "data/NodeFaults.h"
#include "text/Concat.h"

namespace Host {
namespace {

/// What an answer of a run holds beside the data that is looked for.
bool isIgnored(std::string_view name, Content content) {
  return name == "line" || name == "audit" || name == "stats" ||
         (content == Content::leftOver &&
          (name == "status" || name == "vela-policy-monitor:status"));
}

}  // namespace

void DocumentWalk::document(simdjson::ondemand::document& document) {
  const JsonKind kind = JsonTokens::kindOf(take(document.type()));
  if (kind != JsonKind::object) {
    return fault(take(document.raw_json_token()),
                 concat({"expected an object, found ", Host::nameOf(kind)}));
  }
  wholeDocument_ = true;
  containers(take(document.get_object()));
  if (document.current_location().error() != simdjson::OUT_OF_BOUNDS) {
    JsonTokens::stumble();  // there is more behind the object
  }
}

/// Whether this member of an answer holds containers.
bool DocumentWalk::isPartOfAnswer(std::string_view name) const {
  return (content_ != Content::configuration && name == "v2") ||
         (content_ == Content::everything && name == "status");
}

void DocumentWalk::containers(Object object) {
  const auto& tops = Schema::instance().tops();
  Seen seen = 0;
  for (auto field : object) {
    const std::string_view name = tokens_.nameOf(field);
    const Node* const top = Schema::instance().top(name);
    if (full()) {
      return;
    }
    if (isPartOfAnswer(name)) {
      if (Value inner = take(field.value()); is(JsonKind::object, inner)) {
        containers(take(inner.get_object()));
      }
      continue;
    }
    if (content_ != Content::configuration && isIgnored(name, content_)) {
      ignored_ = true;
      continue;
    }
    if (top == nullptr || top->state ? content_ == Content::configuration || top == nullptr
                                     : content_ == Content::leftOver) {
      fault(quoted(name), content_ == Content::leftOver ? whyNotLeftOver(name)
                          : top == nullptr              ? whyNoContainer(name)
                                                        : whyState(*top));
      continue;
    }
    const Within step(steps_, *top);
    const auto index = static_cast<std::size_t>(std::ranges::find(tops, top) - tops.begin());
    if (isFirst(index, name, seen)) {
      value(*top, take(field.value()));
    }
  }
}

void DocumentWalk::value(const Node& node, Value value) {
  const bool object = node.kind == Node::Kind::container || node.kind == Node::Kind::presence;
  if (node.kind == Node::Kind::leaf) {
    Kel::AnyValue place(*node.type);
    if (leaf(node, value, place.get()) && receiver_ != nullptr) {
      receiver_->leaf(node, place.get());
    }
  } else if (object && is(JsonKind::object, value)) {
    if (receiver_ != nullptr) {
      receiver_->open(node);
    }
    members(node, take(value.get_object()));
    if (receiver_ != nullptr) {
      receiver_->close();
    }
  } else if (!object && is(JsonKind::array, value)) {
    list(node, take(value.get_array()));
  }
}

void DocumentWalk::members(const Node& node, Object object) {
  Seen seen = 0;
  std::size_t hint = 0;
  for (auto field : object) {
    const std::string_view name = tokens_.nameOf(field);
    const Node* const child = node.child(withoutModule(node, name), hint);
    if (full()) {
      return;
    }
    if (child == nullptr) {
      fault(quoted(name), whyNoNode(node, name));
      continue;
    }
    const Within step(steps_, *child);
    if (!isFirst(child->position, name, seen)) {
      continue;
    }
    if (child->state && content_ == Content::configuration) {
      passOver(*child, name, take(field.value()));
    } else if (!child->isKey()) {
      value(*child, take(field.value()));
    }
  }
}

/// The flags of a record are no input: a document may hold them, since a run prints them beside the
/// rest of the record, and a change may not.
void DocumentWalk::passOver(const Node& flag, std::string_view name, Value value) {
  if (!wholeDocument_) {
    return fault(quoted(name), whyReadOnly(flag));
  }
  Kel::AnyValue unused(*flag.type);
  leaf(flag, value, unused.get());
}

void DocumentWalk::list(const Node& node, Array array) {
  Kel::AnyValue key(node.row->key());
  Kel::AnyValue second(node.kind == Node::Kind::mapping ? node.row->value() : node.row->key());
  if (receiver_ != nullptr) {
    receiver_->openList(node);
  }
  std::size_t position = 0;
  for (auto element : array) {
    if (full()) {
      return;
    }
    steps_.back() = {&node, nullptr, ++position};
    const Value value = take(element);
    switch (node.kind) {
      case Node::Kind::list:
        entry(node, value, key.get());
        break;
      case Node::Kind::records:
        record(node, value, key.get());
        break;
      case Node::Kind::mapping:
        pair(node, value, key.get(), second.get());
        break;
      default:
        leafListEntry(node, value, key.get());
    }
  }
  steps_.back() = {&node};
}

void DocumentWalk::entry(const Node& list, Value value, void* key) {
  if (!is(JsonKind::object, value)) {
    return;
  }
  const std::string_view where = value.raw_json_token();
  Object object = take(value.get_object());
  if (done_ != nullptr) {
    done_->store(tokens_.offsetOf(where), std::memory_order_relaxed);
  }
  Receiver* const receiver = receiver_;
  bool opened = false;
  if (readKey(list, object, where, key)) {
    steps_.back().key = key;
    opened = receiver != nullptr && receiver->openEntry(list, key);
    if (receiver != nullptr && !opened) {
      fault(where, "this entry is in the list already");
    }
  }
  // What has no entry to go to is checked all the same.
  receiver_ = opened ? receiver : nullptr;
  take(object.reset());
  members(list, object);
  receiver_ = receiver;
  if (opened) {
    receiver->close();
  }
}

bool DocumentWalk::readKey(const Node& list, Object object, std::string_view where, void* key) {
  const Node& node = *list.children.front();
  for (auto field : object) {
    if (withoutModule(list, tokens_.nameOf(field)) == node.name) {
      const Within step(steps_, node);
      return leaf(node, take(field.value()), key);
    }
  }
  fault(where, concat({"the key \"", node.name, "\" is missing in this entry of ", list.name}));
  return false;
}

void DocumentWalk::leafListEntry(const Node& list, Value value, void* place) {
  if (!leaf(list, value, place)) {
    return;
  }
  steps_.back().key = place;
  if (receiver_ != nullptr && !receiver_->member(list, place)) {
    std::string text;
    list.type->append(text, place);
    const std::string_view given = tokens_.scalarOf(value).raw;
    fault(value.raw_json_token(),
          given == text ? concat({text, " is in the list already"})
                        : concat({given, " is ", text, ", which is in the list already"}));
  }
}

bool DocumentWalk::leaf(const Node& node, Value value, void* place) {
  const bool read = scalars_.read(node, tokens_.scalarOf(value), place);
  if (!read) {
    fault(value.raw_json_token(), scalars_.why());
  }
  return read;
}

bool DocumentWalk::is(JsonKind wanted, Value& value) {
  const JsonKind found = tokens_.scalarOf(value).kind;
  if (found != wanted) {
    fault(value.raw_json_token(),
          concat({"expected ", Host::nameOf(wanted), ", found ", Host::nameOf(found)}));
  }
  return found == wanted;
}

bool DocumentWalk::isFirst(std::size_t index, std::string_view name, Seen& seen) {
  if ((seen >> index & 1U) != 0) {
    fault(quoted(name), concat({"this object has had \"", name, "\" already"}));
    return false;
  }
  seen |= Seen{1} << index;
  return true;
}

void DocumentWalk::fault(std::string_view where, std::string message) {
  faults_.push_back(
      {tokens_.offsetOf(where), underlined(where), std::move(message), pathOf(steps_)});
}

}  // namespace Host
