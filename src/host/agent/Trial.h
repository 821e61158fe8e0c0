#pragma once

#include "agent/Engine.h"

namespace Host {

class JsonWriter;

/// Writes the members "changes", "warnings" and, where there is one, "error": what a change line
/// would do to version 2, what an audit would find then that it does not find now, and what the
/// line would be answered with.
///
/// The line is applied for real, but in a child process, on a copy of the memory as it is now. So
/// the answer is what would happen, and nothing happens: no client, no file and no trace hears of
/// it. The agent waits for the child. Raises std::runtime_error, before it has written anything,
/// when there can be none.
void writeTrial(JsonWriter& json, Engine& engine, const Change& change);

}  // namespace Host
