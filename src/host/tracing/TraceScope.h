#pragma once

#include <string>
#include <string_view>

#include "Pario/Scope.h"
#include "text/TraceSubject.h"

namespace Host {

/// Reads "device=fw1,vrf=red,rule=20000,handler=handleVrf" into the members that it names. A comma
/// that none of the four words follows belongs to the name. False leaves `subject` and says in
/// `why` what was expected.
bool parseTraceSubject(std::string_view text, TraceSubject& subject, std::string& why);

/// What is wrong with `rule` as a priority; empty when it is one, or empty.
std::string whyNoRule(const std::string& rule);

/// The scope of the library's traces for a subject whose rule is a priority.
Pario::Scope scopeOf(const TraceSubject& subject);

}  // namespace Host
