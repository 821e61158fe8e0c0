#pragma once

#include "change/ChangeReader.h"
#include "change/LineWalk.h"
#include "protocol/Request.h"

namespace Host {

/// One walk over one request after the other: the inside of RequestReader.
class RequestWalk : private LineWalk {
 public:
  RequestWalk() : LineWalk(Content::everything) {}
  bool isRequest(std::string_view line);
  std::vector<Fault> read(std::string_view line, Request& request);

 private:
  void members(Object object);
  bool kind(Object object);
  void member(std::size_t index, Value value);
  void containers(Value value);
  void timeout(Value value);
  void change(Value value);
  void keep(Value value, std::optional<std::string>& place);

  Request* request_ = nullptr;  // that is being read
  simdjson::ondemand::parser look_;
  ChangeReader changes_;
};

}  // namespace Host
