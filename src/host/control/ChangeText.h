#pragma once

#include <simdjson.h>

#include <string>

namespace Host {

/// Appends one change of version 2 for people: its sign (+ added, - removed, ~ set), path and
/// value; green, red and yellow where `color` says so.
void appendChange(std::string& out, const simdjson::dom::object& change, bool color);

/// Appends seconds since 1970 as the local time of day: 14:03:59.250.
void appendTimeOfDay(std::string& out, double seconds);

}  // namespace Host
