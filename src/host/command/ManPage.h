#pragma once

#include <string>

namespace Host {

struct CommandText;

/// The manual page of the program (section 1), in the language of man(7).
std::string manPage(const CommandText& program, const std::string& version);

}  // namespace Host
