#pragma once

#include <cstdint>
#include <string>

#include "data/Content.h"
#include "data/Trees.h"
#include "state/Files.h"

namespace Host {

/// Writes a snapshot: a folder that appears whole or not at all. In it are documents that
/// `vpm replay` takes, configuration.json for --config and version2.json for --v2, and a manifest
/// with their sizes and checksums. Raises OutputError.
/// `through`: the number of the last record that is in it.
void writeSnapshot(Files& files, const std::string& folder, const Trees& trees,
                   std::uint64_t through);
/// Reads it into fresh trees, and returns the number of the last record in it. Raises StateError.
std::uint64_t readSnapshot(const std::string& folder, const Trees& trees);

/// How many bytes its documents have.
std::size_t snapshotSize(const std::string& folder);

/// What the trees have of this content, as a file that appears whole or not at all.
void writeDocument(Files& files, const std::string& file, const Trees& trees, Content content);
/// Reads it into fresh trees. Raises StateError.
void readDocument(const std::string& file, const Trees& trees, Content content);

}  // namespace Host
