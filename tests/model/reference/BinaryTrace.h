#pragma once

#include <memory>

#include "Lumo/Lumo.h"
#include "model/reference/Collection.h"

namespace Reference {

/// The binary trace of a world of the library, in memory, while this lives.
class BinaryTrace {
 public:
  BinaryTrace();
  BinaryTrace(const BinaryTrace&) = delete;
  BinaryTrace& operator=(const BinaryTrace&) = delete;
  ~BinaryTrace();

  /// All records so far, as the text trace prints them: level and message, a line each.
  Text lines() const;

 private:
  std::unique_ptr<Lumo::TraceFile> ring_;
};

}  // namespace Reference
