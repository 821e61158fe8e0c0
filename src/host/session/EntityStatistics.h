#pragma once

namespace Host {

class JsonWriter;

/// The member "entities": what the configuration and status entities of each type have published
/// since the process began, and how many writes found what they wrote.
void writeEntityStatistics(JsonWriter& json);

}  // namespace Host
