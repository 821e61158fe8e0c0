#pragma once

#include <string>
#include <vector>

#include "text/Console.h"

namespace Host {

/// Runs the program with these arguments (without its own name) and returns its exit code. Nothing
/// gets out but that.
int run(const std::vector<std::string>& arguments, const Console& console);

}  // namespace Host
