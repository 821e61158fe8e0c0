#pragma once

/// The front door of the binary trace: a ring of records that is on in production, costs a few
/// nanoseconds a record, survives the crash of its process and is read by the tools of the field.

#include "Lumo/DefaultHandle.h"
#include "Lumo/Records.h"
#include "Lumo/Site.h"
#include "Lumo/TraceFile.h"
