#include "tracing/TraceSettings.h"

#include "text/JsonWriter.h"
#include "tracing/TraceScope.h"

namespace Host {

std::string TraceSettings::change(const Change& change) {
  Kel::TextTrace::Levels levels = tracing_.levels();
  std::string why;
  if (change.levels && !Kel::TextTrace::parseLevels(*change.levels, levels, why)) {
    return why;
  }
  TraceSubject subject{change.device.value_or(subject_.device), change.vrf.value_or(subject_.vrf),
                       change.rule.value_or(subject_.rule),
                       change.handler.value_or(subject_.handler)};
  why = whyNoRule(subject.rule);
  if (!why.empty()) {
    return why;
  }
  subject_ = std::move(subject);
  Pario::scopeIs(scopeOf(subject_));
  tracing_.levelsAre(levels);
  return "";
}

void TraceSettings::write(JsonWriter& json) const {
  json.name("trace");
  json.openObject();
  json.name("levels");
  json.text(Kel::TextTrace::textOfLevels(tracing_.levels()));
  json.name("device");
  json.text(subject_.device);
  json.name("vrf");
  json.text(subject_.vrf);
  json.name("rule");
  json.text(subject_.rule);
  json.name("handler");
  json.text(subject_.handler);
  json.closeObject();
}

}  // namespace Host
