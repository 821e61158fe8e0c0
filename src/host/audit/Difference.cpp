#include "audit/Difference.h"

#include "text/JsonWriter.h"

namespace Host {

std::string_view nameOf(Difference::Kind kind) {
  switch (kind) {
    case Difference::Kind::pending:
      return "pending";
    case Difference::Kind::asDesigned:
      return "as designed";
    case Difference::Kind::foreign:
      return "foreign";
    default:
      return "defect";
  }
}

bool isAlarming(Difference::Kind kind) {
  return kind == Difference::Kind::foreign || kind == Difference::Kind::defect;
}

bool writeDifferences(JsonWriter& json, const std::vector<Difference>& differences) {
  bool alarming = false;
  json.openObject();
  json.name("equal");
  json.boolean(differences.empty());
  json.name("differences");
  json.openArray();
  for (const Difference& difference : differences) {
    alarming = alarming || isAlarming(difference.kind);
    json.openObject();
    json.name("path");
    json.text(difference.path);
    json.name("class");
    json.text(nameOf(difference.kind));
    json.name("why");
    json.text(difference.why);
    json.closeObject();
  }
  json.closeArray();
  json.closeObject();
  return alarming;
}

}  // namespace Host
