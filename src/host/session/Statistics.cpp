#include "session/Statistics.h"

#include "Kel/Slab.h"
#include "text/JsonWriter.h"

namespace Host {

void writeStatistics(JsonWriter& json, const Statistics& statistics) {
  json.name("stats");
  json.openObject();
  writeStatisticsMembers(json, statistics);
  json.closeObject();
}

void writeStatisticsMembers(JsonWriter& json, const Statistics& statistics) {
  json.name("applied");
  json.number(statistics.applied);
  json.name("failed");
  json.number(statistics.failed);
  json.name("writes");
  json.number(statistics.writes);
  json.name("types");
  json.openArray();
  Kel::Slab::forEach(
      [](void* context, const Kel::Slab& slab) {
        auto& writer = *static_cast<JsonWriter*>(context);
        // A type that the process has met earlier is as good as one that it has not.
        if (slab.live() == 0) {
          return;
        }
        writer.openRecord();
        writer.name("type");
        writer.text(slab.typeName());
        writer.name("objects");
        writer.number(slab.live());
        writer.name("bytes");
        writer.number(slab.live() * slab.objectSize());
        writer.closeRecord();
      },
      &json);
  json.closeArray();
}

}  // namespace Host
