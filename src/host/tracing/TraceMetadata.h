#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "Lumo/Metadata.h"
#include "Lumo/Site.h"

namespace Host {

/// A site as the metadata of a trace describe it. Of `site`, scope and form are what precedes and
/// what is the handler's short name; the parameters behind it are the first literal.
struct TraceSite {
  Lumo::Site site;
  std::string className;           ///< "VelaPolicyMonitor::PolicyTranslateRootSm"
  std::string function;            ///< "handlePolicySet(const String&)"
  std::vector<std::string> names;  ///< of the values: "Device_name"
};

/// The file `metadata` of a trace, read back: the reverse of Lumo::metadataText. A trace is read
/// with these sites alone, as the process that wrote it may be gone, or of another build.
class TraceMetadata {
 public:
  /// Raises TraceError; `name` is that of the file, for the message.
  TraceMetadata(std::string_view text, const std::string& name);
  TraceMetadata(const TraceMetadata&) = delete;
  TraceMetadata& operator=(const TraceMetadata&) = delete;

  const Lumo::Uuid& uuid() const { return uuid_; }
  /// Of the process that writes, or wrote, the trace.
  long processId() const { return processId_; }
  /// By their numbers. Their addresses stay.
  const std::deque<TraceSite>& sites() const { return sites_; }

 private:
  friend class TraceMetadataReader;

  struct Type {
    std::string name;
    std::vector<std::string> labelTexts;
    std::vector<std::string_view> labels;
    Lumo::ValueType type{};
  };

  Lumo::Uuid uuid_{};
  long processId_ = 0;
  std::deque<TraceSite> sites_;
  std::deque<Type> types_;  // of the values of all sites
};

}  // namespace Host
