#include "tracing/TextTrace.h"

#include <fstream>

#include "text/ByteSink.h"

namespace Host {

TextTrace::TextTrace(const std::string& file, Kel::TextTrace::Levels levels)
    : facility_(Kel::TextTrace::facility("VelaPolicyMonitor")), levelsBefore_(facility_.levels()) {
  if (file != "-") {
    const std::ofstream emptied(file, std::ios::trunc);  // the sink itself only appends
  }
  std::string why;
  auto sink = Kel::TextTrace::fileSink(file, why);
  if (sink == nullptr) {
    throw OutputError(file + ": the trace cannot be written: " + why);
  }
  sinkBefore_ = Kel::TextTrace::sinkIs(std::move(sink));
  facility_.levelsAre(levels);
}

TextTrace::~TextTrace() {
  facility_.levelsAre(levelsBefore_);
  Kel::TextTrace::sinkIs(std::move(sinkBefore_));
}

}  // namespace Host
