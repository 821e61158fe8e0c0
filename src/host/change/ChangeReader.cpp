#include "change/ChangeReader.h"

#include "change/ChangeWalk.h"

namespace Host {

ChangeReader::ChangeReader() : walk_(std::make_unique<ChangeWalk>()) {}
ChangeReader::~ChangeReader() = default;

std::vector<Fault> ChangeReader::read(std::string_view line, Change& change) {
  return walk_->read(line, change);
}

}  // namespace Host
