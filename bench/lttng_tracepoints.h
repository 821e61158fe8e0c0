// The tracepoint of lttng.cpp, in the form that LTTng's own headers read several times over.
#undef LTTNG_UST_TRACEPOINT_PROVIDER
#define LTTNG_UST_TRACEPOINT_PROVIDER bench
#undef LTTNG_UST_TRACEPOINT_INCLUDE
#define LTTNG_UST_TRACEPOINT_INCLUDE "lttng_tracepoints.h"

#if !defined(BENCH_LTTNG_TRACEPOINTS_H) || defined(LTTNG_UST_TRACEPOINT_HEADER_MULTI_READ)
#define BENCH_LTTNG_TRACEPOINTS_H

#include <lttng/tracepoint.h>

LTTNG_UST_TRACEPOINT_EVENT(bench, record, LTTNG_UST_TP_ARGS(const char*, text, uint64_t, number),
                           LTTNG_UST_TP_FIELDS(lttng_ust_field_string(interface, text)
                                                   lttng_ust_field_integer(uint64_t, number,
                                                                           number)))

#endif

#include <lttng/tracepoint-event.h>
