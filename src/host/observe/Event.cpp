#include "observe/Event.h"

#include "text/JsonWriter.h"

namespace Host {
namespace {

std::string_view nameOf(Event::Kind kind) {
  switch (kind) {
    case Event::Kind::add:
      return "add";
    case Event::Kind::remove:
      return "remove";
    default:
      return "set";
  }
}

}  // namespace

void writeMembers(JsonWriter& json, const Event& event) {
  json.name("event");
  json.text(nameOf(event.kind));
  json.name("path");
  json.text(event.path);
  if (event.kind == Event::Kind::set) {
    json.name("value");
    json.spelled(event.value);
  }
}

}  // namespace Host
