#pragma once

#include <memory>
#include <string>

#include "Kel/TextTrace.h"

namespace Host {

/// The text trace of the library, written to a file of the caller's choice as long as this lives.
class TextTrace {
 public:
  /// `file` is replaced; "-" is standard error. Raises OutputError when it cannot be written.
  TextTrace(const std::string& file, Kel::TextTrace::Levels levels);
  ~TextTrace();
  TextTrace(const TextTrace&) = delete;
  TextTrace& operator=(const TextTrace&) = delete;

 private:
  Kel::TextTrace::Facility& facility_;
  const Kel::TextTrace::Levels levelsBefore_;
  std::shared_ptr<Kel::TextTrace::Sink> sinkBefore_;
};

}  // namespace Host
