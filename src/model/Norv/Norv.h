#pragma once

#include "Norv/IpGenAddr.h"    // IWYU pragma: export
#include "Norv/IpGenPrefix.h"  // IWYU pragma: export
#include "Norv/IpProto.h"      // IWYU pragma: export
