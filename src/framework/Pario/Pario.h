#pragma once

/// The front door of the trace front end: one call, two facilities.

#include "Pario/Event.h"
#include "Pario/Scope.h"
#include "Pario/Write.h"
