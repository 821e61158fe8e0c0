#pragma once

#include <string>
#include <string_view>

#include "data/Schema.h"

namespace Host {

// What is said of members that do not belong where they stand.

/// `name` is no container at the top.
std::string whyNoContainer(std::string_view name);
/// `name` does not belong into the left-over state of version 2.
std::string whyNotLeftOver(std::string_view name);
/// A change is not for `node`.
std::string whyReadOnly(const Node& node);
/// `name` is no child of `parent`.
std::string whyNoNode(const Node& parent, std::string_view name);
/// `top` cannot be configured.
std::string whyState(const Node& top);

/// `name` without the prefix of the module that defines `parent`; another prefix stays. Below the
/// top RFC 7951 asks for a prefix only where the module changes, which it never does here.
std::string_view withoutModule(const Node& parent, std::string_view name);

}  // namespace Host
