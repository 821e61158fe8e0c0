#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

class JsonWriter;

/// Something in which the two generations differ.
struct Difference {
  enum class Kind : std::uint8_t { pending, asDesigned, foreign, defect };

  std::string path;
  std::string why;
  Kind kind;
};

/// "pending", "as designed", "foreign", "defect".
std::string_view nameOf(Difference::Kind kind);
/// Whether somebody should look after it.
bool isAlarming(Difference::Kind kind);

/// Writes {"equal": ..., "differences": [...]}. Whether one of them is alarming.
bool writeDifferences(JsonWriter& json, const std::vector<Difference>& differences);

}  // namespace Host
