#pragma once

namespace Host {

class JsonWriter;

/// While it lives, the runs of the library's handlers are counted and timed, from zero.
class HandlerMeasurement {
 public:
  HandlerMeasurement();
  HandlerMeasurement(const HandlerMeasurement&) = delete;
  HandlerMeasurement& operator=(const HandlerMeasurement&) = delete;
  ~HandlerMeasurement();
};

/// The members "handlers": class, handler, calls and seconds (without the handlers inside) of each
/// that has run; and "postponed", "postponed-at-once": calls that had to wait for a busy machine,
/// and how many at most for one.
void writeHandlerStatistics(JsonWriter& json);

}  // namespace Host
