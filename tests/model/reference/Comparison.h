#pragma once

#include "model/reference/LibrarySide.h"
#include "model/reference/ModelSide.h"

namespace Reference {

/// The first thing in which the two worlds differ, with its place; empty when there is none.
/// Compared are all entities of the five trees and those kept, with their values, the order of
/// their entries and their subscribers; all machines and those held, with what they were given
/// (by identity), flags and cookies; and how many machines and cookies there are.
Text differenceOf(ModelSide& model, const LibrarySide& library);

}  // namespace Reference
