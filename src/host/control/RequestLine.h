#pragma once

#include <string_view>

#include "text/JsonWriter.h"

namespace Host {

/// A request, written member by member through `json`: what its `request` says comes first.
class RequestLine {
 public:
  explicit RequestLine(std::string_view request) : json(sink_, Layout::compact) {
    json.openObject();
    member("request", request);
  }

  void member(std::string_view name, std::string_view text) {
    json.name(name);
    json.text(text);
  }
  /// Likewise, unless it is empty.
  void optional(std::string_view name, std::string_view text) {
    if (!text.empty()) {
      member(name, text);
    }
  }
  /// The whole line with its end; nothing can be added after that.
  std::string_view done() {
    json.closeObject();
    json.endLine();
    return sink_.text();
  }

 private:
  TextSink sink_;

 public:
  JsonWriter json;
};

}  // namespace Host
