#include "protocol/RequestReader.h"

#include "protocol/RequestWalk.h"

namespace Host {

RequestReader::RequestReader() : walk_(std::make_unique<RequestWalk>()) {}
RequestReader::~RequestReader() = default;

bool RequestReader::isRequest(std::string_view line) { return walk_->isRequest(line); }

std::vector<Fault> RequestReader::read(std::string_view line, Request& request) {
  return walk_->read(line, request);
}

}  // namespace Host
