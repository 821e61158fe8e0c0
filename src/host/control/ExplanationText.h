#pragma once

#include <simdjson.h>

#include <string>

namespace Host {

/// An explanation as it is answered, for people: nothing but its change line is wider than a
/// terminal.
///
///   /vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']
///     is not in version 2: the monitor's record "fw1" has no network VRF name
///     for VRF "red"
///
///     [x] tree policy: running
///     [x] policy-set fw1: in version 1
///     ...
///     [ ] mapping red: no network VRF name
///
///     This change line helps:
///   {"update":[...]}
std::string explanationText(const simdjson::dom::object& explanation);

}  // namespace Host
