// Change lines, several in a row, on a small running world: no line harms it, and after each the
// audit finds nothing that somebody would have to look after.

#include <algorithm>

#include "Input.h"
#include "change/ChangeReader.h"
#include "data/EntityFiller.h"
#include "document/DocumentReader.h"
#include "session/Session.h"
#include "text/LineReader.h"

namespace {

constexpr std::string_view kWorld = R"({
  "vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [
    {"vrf-name": "red", "rule": [{"priority": 20000, "origin": [
      {"name": "web", "tags": "t", "match": {"dst-ip": ["10.1.0.0/16"]}}]}]}]}]},
  "vela-l3:service-device-source": {"service-device": [{"device-name": "fw1", "vrf": [
    {"vrf-name": "red", "l3-intf": [{"address": "10.0.0.1"}]}]}]},
  "vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
    "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "net-red"}]}]}
})";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Host::Trees trees;
  Host::EntityFiller filler(trees);
  Host::DocumentReader(1).read(Host::SourceText("world", kWorld), filler);
  Host::VirtualClock clock(0);
  Host::Translation translation(trees);
  Host::Session session(trees, translation, clock);
  translation.start();

  const Host::SourceText log("input", Fuzz::textOf(data, size));
  Host::ChangeReader reader;
  Host::Lines lines(log.text());
  while (const auto line = lines.next()) {
    Host::Change change;
    const auto faults = reader.read(*line, change);
    for (const Host::Fault& fault : faults) {
      Fuzz::require(fault.offset <= line->size(), "a fault is inside the line");
      Fuzz::require(!fault.message.empty(), "a fault says what is wrong");
    }
    if (!faults.empty()) {
      continue;
    }
    session.apply(change);
    for (const Host::Difference& difference : session.audit()) {
      Fuzz::require(!isAlarming(difference.kind), "the audit finds nothing alarming");
    }
  }
  return 0;
}
