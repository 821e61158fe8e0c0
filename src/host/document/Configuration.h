#pragma once

#include <string>
#include <vector>

#include "data/Trees.h"
#include "text/Progress.h"
#include "text/Report.h"

namespace Host {

/// Reads the documents, in this order, into trees that nobody watches yet: lists are merged, and of
/// a leaf that several documents have the last one counts. False when anything is wrong; all of it
/// has been reported then, and the trees are good for nothing.
bool readConfiguration(const std::vector<std::string>& documents, const Trees& trees,
                       Report& report, Progress& progress);

/// Likewise for one document whose text is at hand.
bool readConfiguration(const SourceText& source, const Trees& trees, Report& report,
                       Progress& progress);

/// Likewise for documents that may hold version 2 and the flags of the translation as well, as a
/// run has printed them.
bool readEverything(const std::vector<std::string>& documents, const Trees& trees, Report& report,
                    Progress& progress);
/// Likewise for one document with version 2 as an earlier run has printed it, be it the document of
/// `vpm translate` or an answer of `vpm replay`. The monitor's records in it are ignored.
bool readLeftOver(const std::string& document, const Trees& trees, Report& report,
                  Progress& progress);

}  // namespace Host
