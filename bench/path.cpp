#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>

#include "Brix/Publisher.h"
#include "Kel/System.h"
#include "Sides.h"

// Runs one hot path a given number of times, for a tool that counts instructions:
//   bench_path PATH TIMES

namespace Bench {
namespace {

class Watcher final : public Brix::Subscriber {
 public:
  Watcher() : Subscriber(&notify) {}

 private:
  static void notify(const Brix::Publisher& /*publisher*/, Subscriber& /*self*/,
                     Brix::AttrId /*id*/, const void* /*key*/, const void* /*value*/) {}
};

struct Tracked : Kel::SlabAllocated<Tracked> {
  static constexpr const char* kelTypeName() { return "Bench::Tracked"; }
  std::uint64_t content[6] = {};
};

void notification(long times) {
  const auto entity = VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Watcher watchers[8];
  for (Watcher& watcher : watchers) {
    entity->publisher().subscriberAdd(watcher);
  }
  for (; times != 0; --times) {
    entity->publisher().publish(258);
  }
  for (Watcher& watcher : watchers) {
    entity->publisher().subscriberRemove(watcher);
  }
}

void mirroredChange(long times) {
  auto& side = mirroredTree<Library>(1000);
  const Prefix key = absentPrefix(7);
  for (; times != 0; --times) {
    side.insert(7, key);
    side.erase(7, key);
  }
}

/// While it lives all machines trace, by a clock that stands still: how often that of the system
/// asks the kernel depends on the time that passes, and every run is to take the same instructions.
class Traced {
 public:
  Traced() {
    Kel::System::clockIs([] { return 1.0; });
  }
  Traced(const Traced&) = delete;
  Traced& operator=(const Traced&) = delete;
  ~Traced() { Kel::System::clockIs({}); }

 private:
  Tracing tracing_;
};

void records(long times) {
  static constexpr Pario::Source kSource{"Bench", "void Bench::", "path.cpp"};
  for (; times != 0; --times) {
    Pario::write({kSource, "record()", {6, 1}}, " interface ", std::string_view("GigEthernet4"),
                 " number ", times);
  }
}

void recordsOfAnEvent(long times) {
  const Traced traced;
  const Pario::Event event;
  records(times);
}

void recordsByThemselves(long times) {
  const Traced traced;
  records(times);
}

void tracedChange(long times) {
  const Traced traced;
  mirroredChange(times);
}

void objectPair(long times) {
  for (; times != 0; --times) {
    auto* object = new Tracked;
    benchmark::DoNotOptimize(object);
    delete object;
  }
}

void setHit(long times) {
  Kel::Set<Prefix> set;
  for (const Prefix& key : prefixes(1000)) {
    set.insert(key);
  }
  const Prefix key = prefixOf(500);
  for (; times != 0; --times) {
    benchmark::DoNotOptimize(set.contains(key));
  }
}

const std::map<std::string, void (*)(long)> kPaths{
    {"notification of 8 subscribers", notification},
    {"insertion and deletion through a mirror", mirroredChange},
    {"insertion and deletion through a mirror, ring on", tracedChange},
    {"trace record", recordsOfAnEvent},
    {"trace record outside of an event", recordsByThemselves},
    {"object creation and destruction", objectPair},
    {"set hit", setHit},
};

}  // namespace
}  // namespace Bench

int main(int count, char** words) {
  const auto path = Bench::kPaths.find(count == 3 ? words[1] : "");
  if (path == Bench::kPaths.end()) {
    std::cerr << "usage: bench_path PATH TIMES, where PATH is one of these:\n";
    for (const auto& [name, run] : Bench::kPaths) {
      std::cerr << "  " << name << '\n';
    }
    return 2;
  }
  path->second(std::atol(words[2]));
  return 0;
}
