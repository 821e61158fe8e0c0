#pragma once

/// The front door of the object framework: all that an agent needs to hold, watch and write
/// configuration and status objects.

#include "Kel/Assert.h"
#include "Kel/Attributes.h"
#include "Kel/Exception.h"
#include "Kel/LogHandle.h"
#include "Kel/Observer.h"
#include "Kel/PtrInterface.h"
#include "Kel/System.h"
#include "Kel/Text.h"
