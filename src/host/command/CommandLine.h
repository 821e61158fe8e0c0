#pragma once

#include <string>
#include <vector>

#include "text/Console.h"

namespace Host {

class CommandTable;

/// Adds all commands of the program.
void addCommands(CommandTable& table);

/// Runs the program with these arguments (without its own name) and returns its exit code. Nothing
/// gets out but that.
int run(const std::vector<std::string>& arguments, const Console& console);

}  // namespace Host
