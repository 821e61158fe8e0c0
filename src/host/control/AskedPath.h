#pragma once

#include <string>

#include "data/TreePath.h"
#include "text/Report.h"

namespace Host {

/// Reads a path of the command line; false when it is wrong, which is reported.
bool readAskedPath(const std::string& text, TreePath& path, Report& report);

}  // namespace Host
