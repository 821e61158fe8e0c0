#pragma once

#include <string>

#include "agent/Engine.h"

namespace Host {

/// What a change line would do, found out by doing it: for a process whose memory nobody else
/// looks at and that ends behind this.
///
/// Three lines of JSON: the changes of version 2, the warnings, and the line's error (null when
/// there is none). A warning is a difference between the generations that there was not before, a
/// device whose state machines would follow a record that has gone, or an entry that would be lost.
/// Only the devices that the line can reach are looked at.
std::string tryOut(Engine& engine, const Change& change);

}  // namespace Host
