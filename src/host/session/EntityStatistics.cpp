#include "session/EntityStatistics.h"

#include "Kel/Slab.h"
#include "text/JsonWriter.h"

namespace Host {

void writeEntityStatistics(JsonWriter& json) {
  json.name("entities");
  json.openArray();
  Kel::Slab::forEach(
      [](void* context, const Kel::Slab& slab) {
        const Kel::EntityCounts* const counts = slab.counts();
        if (counts == nullptr) {
          return;
        }
        auto& writer = *static_cast<JsonWriter*>(context);
        writer.openRecord();
        writer.name("type");
        writer.text(slab.typeName());
        writer.name("notifications");
        writer.number(counts->notifications.value());
        writer.name("unchanged-writes");
        writer.number(counts->unchangedWrites.value());
        writer.closeRecord();
      },
      &json);
  json.closeArray();
}

}  // namespace Host
