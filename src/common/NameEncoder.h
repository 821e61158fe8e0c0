#pragma once

#include "Kel/Text.h"
#include "VelaL3V2Shared/NameSet.h"

namespace [[using gnu: visibility("default")]] VelaL3V2Shared {

/// Turns the components of a compound name into one text and back. The text is kept in
/// configuration keys, so its form is fixed byte for byte: the components in ascending order of
/// their indices, each with ":" and "\" preceded by "\", joined by ":". Indices are not written: a
/// gap leaves no trace, and reading back numbers the components from 0.
///
/// The empty set and the set of one empty component both give the empty text, which reads back as
/// the empty set.
class NameEncoder {
 public:
  /// Joins the components by ":", each with its ":" and "\\" escaped. A gap leaves no trace.
  static Kel::String encode(const NameSet& names);
  /// Reads any text; a "\" at its very end is dropped.
  static NameSet decode(const Kel::String& text);
};

}  // namespace VelaL3V2Shared
