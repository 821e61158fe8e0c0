#pragma once

#include <simdjson.h>

#include <string>

namespace Host {

/// Counts in the text format that Prometheus collects (version 0.0.4). A count that is not known
/// here is written as an untyped one, under the name that it has.
std::string prometheusText(const simdjson::dom::object& stats);

}  // namespace Host
