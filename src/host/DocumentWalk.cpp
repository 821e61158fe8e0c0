#include "host/DocumentWalk.h"

#include <utility>

#include "host/Concat.h"
#include "host/JsonText.h"
#include "host/NodeFaults.h"

namespace Host {
namespace {

namespace ondemand = simdjson::ondemand;

/// A step of the path, for as long as the walk is there.
class Within {
 public:
  Within(std::vector<Step>& steps, const Node& node) : steps_(steps) { steps.push_back({&node}); }
  Within(const Within&) = delete;
  Within& operator=(const Within&) = delete;
  ~Within() { steps_.pop_back(); }

 private:
  std::vector<Step>& steps_;
};

template <class T>
T take(simdjson::simdjson_result<T> result) {
  T taken;
  if (const auto error = std::move(result).get(taken)) {
    throw simdjson::simdjson_error(error);
  }
  return taken;
}

[[noreturn]] void stumble() { throw simdjson::simdjson_error(simdjson::TAPE_ERROR); }

JsonKind kindOf(ondemand::json_type type) {
  switch (type) {
    case ondemand::json_type::object:
      return JsonKind::object;
    case ondemand::json_type::array:
      return JsonKind::array;
    case ondemand::json_type::string:
      return JsonKind::text;
    case ondemand::json_type::number:
      return JsonKind::number;
    case ondemand::json_type::boolean:
      return JsonKind::boolean;
    default:
      return JsonKind::null;
  }
}

std::string_view trimmed(std::string_view token) {
  return token.substr(0, token.find_last_not_of(" \t\r\n") + 1);
}

/// With the quotes around it.
std::string_view quoted(std::string_view inside) { return {inside.data() - 1, inside.size() + 2}; }

bool has(std::uint64_t seen, std::size_t index) { return ((seen >> index) & 1U) != 0; }

}  // namespace

void DocumentWalk::document(ondemand::document& document) {
  const JsonKind kind = kindOf(take(document.type()));
  if (kind != JsonKind::object) {
    return fault(take(document.raw_json_token()),
                 concat({"expected an object, found ", Host::nameOf(kind)}));
  }
  const auto& tops = Schema::instance().tops();
  Seen seen = 0;
  for (auto field : take(document.get_object())) {
    const std::string_view name = nameOf(field);
    const Node* const top = Schema::instance().top(name);
    if (full()) {
      return;
    }
    if (top == nullptr || top->state) {
      fault(quoted(name), top == nullptr ? whyNoContainer(name) : whyState(*top));
      continue;
    }
    const Within step(steps_, *top);
    const auto index = static_cast<std::size_t>(std::ranges::find(tops, top) - tops.begin());
    if (isFirst(index, name, seen)) {
      value(*top, take(field.value()));
    }
  }
  if (document.current_location().error() != simdjson::OUT_OF_BOUNDS) {
    stumble();  // there is more behind the object
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
    const std::string_view name = nameOf(field);
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
    if (child->state) {
      fault(quoted(name), whyState(*child));
    } else if (!child->isKey()) {
      value(*child, take(field.value()));
    }
  }
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
    done_->store(static_cast<std::size_t>(where.data() - text_.data()), std::memory_order_relaxed);
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
    if (withoutModule(list, nameOf(field)) == node.name) {
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
    const std::string_view given = scalarOf(value).raw;
    fault(value.raw_json_token(),
          given == text ? concat({text, " is in the list already"})
                        : concat({given, " is ", text, ", which is in the list already"}));
  }
}

void DocumentWalk::record(const Node& list, Value value, void* place) {
  const std::string_view where = value.raw_json_token();
  const auto placeOf = [place](const Node& leaf) {
    return static_cast<std::byte*>(place) + leaf.offset;
  };
  if (leaves(list, value, placeOf)) {
    steps_.back().key = place;
    if (receiver_ != nullptr && !receiver_->member(list, place)) {
      fault(where, "this entry is in the list already");
    }
  }
}

void DocumentWalk::pair(const Node& mapping, Value value, void* key, void* place) {
  const std::string_view where = value.raw_json_token();
  const auto placeOf = [=](const Node& leaf) { return leaf.isKey() ? key : place; };
  if (const auto seen = leaves(mapping, value, placeOf)) {
    steps_.back().key = key;
    const void* const given = has(*seen, mapping.keys) ? place : nullptr;
    if (receiver_ != nullptr && !receiver_->pair(mapping, key, given)) {
      fault(where, "this entry is in the list already");
    }
  }
}

/// Reads an object that has nothing but leaves; none when there was a fault in it.
template <class PlaceOf>
std::optional<DocumentWalk::Seen> DocumentWalk::leaves(const Node& node, Value value,
                                                       PlaceOf placeOf) {
  if (!is(JsonKind::object, value)) {
    return std::nullopt;
  }
  const std::string_view where = value.raw_json_token();
  const std::size_t faultsBefore = faults_.size();
  Seen seen = 0;
  std::size_t hint = 0;
  for (auto field : take(value.get_object())) {
    const std::string_view name = nameOf(field);
    const Node* const child = node.child(withoutModule(node, name), hint);
    if (child == nullptr) {
      fault(quoted(name), whyNoNode(node, name));
      continue;
    }
    const Within step(steps_, *child);
    if (isFirst(child->position, name, seen)) {
      leaf(*child, take(field.value()), placeOf(*child));
    }
  }
  for (std::size_t i = 0; i < node.keys; ++i) {
    if (!has(seen, i)) {
      fault(where, concat({"the key \"", node.children[i]->name, "\" is missing in this entry of ",
                           node.name}));
    }
  }
  return faults_.size() == faultsBefore ? std::optional(seen) : std::nullopt;
}

bool DocumentWalk::leaf(const Node& node, Value value, void* place) {
  const bool read = scalars_.read(node, scalarOf(value), place);
  if (!read) {
    fault(value.raw_json_token(), scalars_.why());
  }
  return read;
}

JsonScalar DocumentWalk::scalarOf(Value& value) const {
  const JsonKind kind = kindOf(take(value.type()));
  const std::string_view token = value.raw_json_token();
  if (kind == JsonKind::text) {
    return {kind, inside(token.data() + 1)};
  }
  const std::string_view raw = trimmed(token);
  // The parser has looked at the first character only.
  if ((kind == JsonKind::number && !isJsonNumber(raw)) ||
      (kind == JsonKind::boolean && raw != "true" && raw != "false") ||
      (kind == JsonKind::null && raw != "null")) {
    stumble();
  }
  return {kind, raw};
}

bool DocumentWalk::is(JsonKind wanted, Value& value) {
  const JsonKind found = scalarOf(value).kind;
  if (found != wanted) {
    fault(value.raw_json_token(),
          concat({"expected ", Host::nameOf(wanted), ", found ", Host::nameOf(found)}));
  }
  return found == wanted;
}

bool DocumentWalk::isFirst(std::size_t index, std::string_view name, Seen& seen) {
  if (has(seen, index)) {
    fault(quoted(name), concat({"this object has had \"", name, "\" already"}));
    return false;
  }
  seen |= Seen{1} << index;
  return true;
}

// Deliberate: escapes in a name are not resolved; no node has a name that needs one.
std::string_view DocumentWalk::nameOf(simdjson::simdjson_result<ondemand::field>& field) const {
  return inside(take(field.key()).raw());
}

/// The inside of the JSON text that begins at `begin`, behind its quote.
std::string_view DocumentWalk::inside(const char* begin) const {
  const char* const end = text_.data() + text_.size();
  const char* at = begin;
  while (at < end && *at != '"') {
    at += *at == '\\' ? 2 : 1;
  }
  return {begin, static_cast<std::size_t>(std::min(at, end) - begin)};
}

void DocumentWalk::fault(std::string_view where, std::string message) {
  const auto offset = static_cast<std::size_t>(where.data() - text_.data());
  const bool container = where.starts_with('{') || where.starts_with('[');
  faults_.push_back(
      {offset, container ? 1 : trimmed(where).size(), std::move(message), pathOf(steps_)});
}

}  // namespace Host
