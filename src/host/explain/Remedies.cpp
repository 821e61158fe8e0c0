#include "explain/Remedies.h"

#include "text/JsonWriter.h"

namespace Host {
namespace {

/// What `members` writes into an object, as text.
template <class Members>
std::string object(Members members) {
  TextSink sink;
  JsonWriter json(sink, Layout::compact);
  json.openObject();
  members(json);
  json.closeObject();
  json.endLine();
  return sink.text().substr(0, sink.text().size() - 1);
}

void notify(JsonWriter& json, const std::string& path) {
  json.name("notify");
  json.openArray();
  json.text(path);
  json.closeArray();
}

}  // namespace

std::string controlLine(std::string_view verb, bool policies) {
  return object([&](JsonWriter& json) {
    json.name("control");
    json.text(verb);
    json.name("tree");
    json.text(policies ? "policy" : "service-device");
  });
}

std::string notifyLine(const std::string& path) {
  return object([&](JsonWriter& json) { notify(json, path); });
}

std::string updateLine(const std::string& path, std::string_view value,
                       const std::string& notified) {
  return object([&](JsonWriter& json) {
    json.name("update");
    json.openArray();
    json.openObject();
    json.name("path");
    json.text(path);
    if (!value.empty()) {
      json.name("value");
      json.spelled(value);
    }
    json.closeObject();
    json.closeArray();
    if (!notified.empty()) {
      notify(json, notified);
    }
  });
}

}  // namespace Host
