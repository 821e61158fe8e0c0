#pragma once

#include <string>
#include <string_view>

namespace Host {

// Change lines, ready to be sent.

std::string controlLine(std::string_view verb, bool policies);
/// Announces what is at this path once more.
std::string notifyLine(const std::string& path);
/// Puts `value`, which is JSON (empty: none), to `path`, and then announces `notified` (empty:
/// nothing).
std::string updateLine(const std::string& path, std::string_view value,
                       const std::string& notified = {});

}  // namespace Host
