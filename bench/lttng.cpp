#define LTTNG_UST_TRACEPOINT_CREATE_PROBES
#define LTTNG_UST_TRACEPOINT_DEFINE
#include "Measure.h"
#include "lttng_tracepoints.h"

// The record of trace.cpp by LTTng-UST, whose library records only while a session wants it; see
// lttng.py. A program of its own, because the library starts threads, and glibc's heap, which other
// cases are compared with, is slower in a program that has some.

namespace Bench {
namespace {

void lttng(benchmark::State& state) {
  if (!lttng_ust_tracepoint_enabled(bench, record)) {
    state.SkipWithError("no session records the tracepoint; start this program by report.py");
    return;
  }
  std::uint64_t number = 0;
  for (auto _ : state) {
    lttng_ust_tracepoint(bench, record, "GigEthernet4", ++number);
  }
}
BENCHMARK(lttng)->Name("trace record with its own clock read/LTTng-UST");

}  // namespace
}  // namespace Bench
