#include "session/HandlerStatistics.h"

#include "Pario/Listening.h"
#include "common/HandlerTimes.h"
#include "common/TranslateSm.h"
#include "text/JsonWriter.h"

namespace Host {

using VelaPolicyMonitor::HandlerTimes;

HandlerMeasurement::HandlerMeasurement() {
  HandlerTimes::forget();
  Pario::measuringIs(true);
}

HandlerMeasurement::~HandlerMeasurement() { Pario::measuringIs(false); }

void writeHandlerStatistics(JsonWriter& json) {
  json.name("handlers");
  json.openArray();
  for (const HandlerTimes::Entry& entry : HandlerTimes::all()) {
    json.openRecord();
    json.name("class");
    json.text(entry.className);
    json.name("handler");
    json.text(entry.form);
    json.name("calls");
    json.number(entry.calls);
    json.name("seconds");
    json.real(entry.seconds);
    json.closeRecord();
  }
  json.closeArray();
  const auto& postponed = VelaPolicyMonitor::TranslateSm::postponed();
  json.name("postponed");
  json.number(postponed.calls);
  json.name("postponed-at-once");
  json.number(postponed.atOnce);
}

}  // namespace Host
