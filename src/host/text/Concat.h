#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace Host {

/// The parts in a row. (A chain of + that starts with a literal draws a false alarm from GCC 12.)
inline std::string concat(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) {
    text += part;
  }
  return text;
}

}  // namespace Host
