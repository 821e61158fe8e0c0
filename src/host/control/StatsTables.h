#pragma once

#include <simdjson.h>

#include <string>

namespace Host {

/// Counts for people: single ones in a list, those of many things in tables. No line is wider than
/// a terminal, unless a name alone is.
std::string statsTables(const simdjson::dom::object& stats);

}  // namespace Host
