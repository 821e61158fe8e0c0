#include "control/JsonCopy.h"

#include <algorithm>

namespace Host {
namespace {

using simdjson::dom::array;
using simdjson::dom::element;
using simdjson::dom::object;

bool isScalar(const element& value) { return !value.is_object() && !value.is_array(); }

void copyMembers(JsonWriter& json, const object& members, const Node* node) {
  std::size_t hint = 0;
  for (const auto& [name, value] : members) {
    json.name(name);
    copyJson(json, value, node == nullptr ? nullptr : node->child(name, hint));
  }
}

/// Whether an entry of an array is written on one line.
bool isRecord(const element& entry, const Node* node) {
  if (node != nullptr) {
    return node->kind == Node::Kind::records || node->kind == Node::Kind::mapping;
  }
  const object members = entry.get_object();
  return std::all_of(members.begin(), members.end(),
                     [](const auto& member) { return isScalar(member.value); });
}

void copyEntries(JsonWriter& json, const array& entries, const Node* node) {
  if (entries.size() != 0 && isScalar(entries.at(0))) {
    json.openScalars();
    for (const element entry : entries) {
      copyJson(json, entry, node);
    }
    json.closeScalars();
    return;
  }
  json.openArray();
  for (const element entry : entries) {
    if (entry.is_object() && isRecord(entry, node)) {
      json.openRecord();
      copyMembers(json, entry.get_object(), node);
      json.closeRecord();
    } else {
      copyJson(json, entry, node);
    }
  }
  json.closeArray();
}

}  // namespace

void copyJson(JsonWriter& json, const element& value, const Node* node) {
  if (value.is_array()) {
    copyEntries(json, value.get_array(), node);
  } else if (value.is_object()) {
    json.openObject();
    copyMembers(json, value.get_object(), node);
    json.closeObject();
  } else {
    json.spelled(simdjson::minify(value));
  }
}

void copyObject(JsonWriter& json, const object& object) {
  json.openObject();
  copyMembers(json, object, nullptr);
  json.closeObject();
  json.endLine();
}

void copyDocument(JsonWriter& json, const object& document) {
  json.openObject();
  for (const auto& [name, value] : document) {
    json.name(name);
    copyJson(json, value, Schema::instance().top(name));
  }
  json.closeObject();
  json.endLine();
}

}  // namespace Host
