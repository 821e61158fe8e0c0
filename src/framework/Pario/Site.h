#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Kel/TextTrace.h"
#include "Lumo/Site.h"

namespace Pario {

/// Where a message comes from and how it begins. All texts must live as long as the process: their
/// addresses identify the site. The message is scope, form and pieces with nothing between.
struct Line {
  const char* facility;  ///< of the text trace: "VelaPolicyMonitor"
  const char* scope;     ///< "void VelaPolicyMonitor::PolicyTranslateRootSm::"
  const char* form;      ///< "handlePolicySet(const String&)"
  unsigned level;        ///< 0 to 9
  const char* file;      ///< source file, with or without directories
  std::uint32_t line;
};

namespace Impl {

/// What the compiler knows of the pieces of a call: one entry per piece, null for a literal.
struct Shape {
  std::size_t pieces;
  std::size_t literals;
  const Lumo::ValueType* const* types;
};

/// A place in the source, in both traces.
///
/// A site is found by addresses and numbers, not by comparing text: scope, form, line, level and
/// the literals. A call site in the source always has the same ones, and where two call sites agree
/// in all of them they write the same message. (The same text at another address, from another
/// library, is another site: twice in the metadata, the same line when read.)
struct Site {
  const char* scope;
  const char* form;
  std::uint32_t line;
  unsigned level;
  const Shape* shape;
  const char* const* literals;
  const Lumo::Site* binary;
  const Kel::TextTrace::Facility* text;
  std::string prefix;  ///< scope and form
  const Site* next;    ///< in the same bucket
};

/// The site of a call. The first call registers it, thread-safe; the others take about 2 ns.
const Site& findSite(const Line& line, const Shape& shape, const char* const* literals);

}  // namespace Impl
}  // namespace Pario
