#include "explain/Explanation.h"

#include "text/JsonWriter.h"

namespace Host {
namespace {

void textMember(JsonWriter& json, std::string_view name, std::string_view text) {
  if (!text.empty()) {
    json.name(name);
    json.text(text);
  }
}

}  // namespace

void write(JsonWriter& json, const Explanation& explanation) {
  json.openObject();
  json.name("path");
  json.text(explanation.path);
  json.name("in-version-2");
  json.boolean(explanation.inVersion2);
  json.name("steps");
  json.openArray();
  for (const Explanation::Step& step : explanation.steps) {
    json.openObject();
    json.name("level");
    json.text(step.level);
    textMember(json, "key", step.key);
    textMember(json, "path", step.path);
    json.name("found");
    json.boolean(step.found);
    json.name("text");
    json.text(step.text);
    json.closeObject();
  }
  json.closeArray();
  json.name("verdict");
  json.text(explanation.verdict);
  textMember(json, "missing", explanation.missing);
  if (!explanation.remedy.empty()) {
    json.name("remedy");
    json.spelled(explanation.remedy);
  }
  if (explanation.written) {
    json.name("written");
    json.real(*explanation.written);
  }
  json.closeObject();
}

}  // namespace Host
