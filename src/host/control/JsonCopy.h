#pragma once

#include <simdjson.h>

#include "data/Schema.h"
#include "text/JsonWriter.h"

namespace Host {

/// Writes a value that was read, laid out as `vpm` lays out what it writes itself. `node` is what
/// the value is of; null where it is no data, and then small objects in an array stay on one line.
void copyJson(JsonWriter& json, const simdjson::dom::element& value, const Node* node = nullptr);

/// Likewise an object, as one document: one line end behind it.
void copyObject(JsonWriter& json, const simdjson::dom::object& object);

/// Likewise the members of a document: the containers at the top.
void copyDocument(JsonWriter& json, const simdjson::dom::object& document);

}  // namespace Host
