#pragma once

#include <string>
#include <string_view>

namespace Host {

struct CommandText;

// The scripts that complete command lines: commands, options, the values that an option can have,
// and files.

std::string bashCompletion(const CommandText& program);
std::string zshCompletion(const CommandText& program);
std::string fishCompletion(const CommandText& program);

}  // namespace Host
