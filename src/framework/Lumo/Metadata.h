#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace [[using gnu: visibility("default")]] Lumo {

using Uuid = std::array<std::uint8_t, 16>;

/// The metadata of a trace in the language of Common Trace Format 1.8: byte layout, clock, packet
/// and record headers, and one `event` per site with an id below `sites`.
///
/// The name of an event is the site's format, its loglevel the level, its fields the values, named
/// after the literal before them. What the format has no place for stands in the environment block,
/// one entry per site, parts separated by bars, the last ones being the types of the values:
///   site_3 = "VelaPolicyMonitor|8|VelaPolicyTranslate.cpp|41|handleVrf|Kel::String|uint32_t";
std::string metadataText(const Uuid& uuid, std::uint32_t sites);

}  // namespace Lumo
