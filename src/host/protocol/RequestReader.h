#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "protocol/Request.h"
#include "text/SyntaxCheck.h"

namespace Host {

class RequestWalk;

/// Reads the lines of the control socket that are no change lines.
class RequestReader {
 public:
  RequestReader();
  RequestReader(const RequestReader&) = delete;
  RequestReader& operator=(const RequestReader&) = delete;
  ~RequestReader();

  // Behind a line lie SourceText::kPadding readable bytes.

  /// Whether `line` is to be read as a request: an object with a member "request". What is no
  /// object is not.
  bool isRequest(std::string_view line);
  /// Reads `line` into `request`. The faults are sorted by their place, which is counted from the
  /// start of the line; none: all is well.
  std::vector<Fault> read(std::string_view line, Request& request);

 private:
  std::unique_ptr<RequestWalk> walk_;
};

}  // namespace Host
