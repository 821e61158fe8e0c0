#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Kel/TextTrace.h"
#include "Lumo/Site.h"
#include "Pario/Scope.h"

namespace [[using gnu: visibility("default")]] Pario {

/// What the messages of one class have in common.
struct Source {
  const char* facility;  ///< of the text trace: "VelaPolicyMonitor"
  const char* scope;     ///< "void VelaPolicyMonitor::PolicyTranslateRootSm::"
  const char* file;      ///< source file, with or without directories
};

/// Where a message comes from and how it begins. The source and all texts must live as long as the
/// process: their addresses identify the site. The message is scope, form and pieces with nothing
/// between.
struct Line {
  /// What is compared at once.
  struct Spot {
    unsigned level;      ///< 0 to 9
    std::uint32_t line;  ///< of the source file
    /// Both numbers.
    std::uint64_t asWord() const noexcept { return std::bit_cast<std::uint64_t>(*this); }
  };

  const Source& source;  ///< where the class is
  const char* form;      ///< "handlePolicySet(const String&)"
  Spot spot;             ///< how important, and where in the file
  Place place = 0;       ///< to what the message belongs; no part of the site
};

namespace Impl {

/// How many literals one message may have, at most.
inline constexpr std::size_t kMostLiterals = 6;

/// What the compiler knows of the pieces of a call: one entry per piece, null for a literal.
struct Shape {
  std::size_t pieces;
  const Lumo::ValueType* (*const* types)();
};

/// A place in the source, in both traces.
///
/// A site is found by addresses and numbers, not by comparing text: source, form, level and line,
/// the types of the pieces and the literals. A call site in the source always has the same ones,
/// and where two agree in all of them they write the same message. (The same text at another
/// address, from another library, is another site: twice in the metadata, the same line when read.)
struct Site {
  const char* form;
  const Source* source;
  const Shape* shape;
  std::uint64_t spot;
  std::array<const char*, kMostLiterals> literals;
  std::uint32_t concerned;   ///< the bits of `listening` that decide about a message
  std::uint32_t binaryOnly;  ///< how they are when it goes to the binary trace and nowhere else
  std::uint32_t id;          ///< of `binary`
  const Site* next;          ///< in the same bucket
  const Lumo::Site* binary;
  const Kel::TextTrace::Facility* text;
  std::string prefix;  ///< scope and form
};

/// All sites, by hash. They are never removed, so finding one needs no lock: every link of a chain
/// was complete before it was published.
inline constexpr unsigned kBucketBits = 10;
using Bucket = std::atomic<const Site*>;
extern std::array<Bucket, std::size_t{1} << kBucketBits> buckets;

inline Bucket& bucketOf(const Line& line) noexcept {
  const std::uint64_t mixed = reinterpret_cast<std::uintptr_t>(line.form) + line.spot.asWord();
  return buckets[mixed * 0x9e3779b97f4a7c15U >> (64U - kBucketBits)];
}

/// Whether `site` is that of a call, as far as `line` and `shape` tell.
inline bool isSiteOf(const Site& site, const Line& line, const Shape& shape) noexcept {
  return site.form == line.form && site.spot == line.spot.asWord() && site.shape == &shape &&
         site.source == &line.source;
}

/// Registers the site of a call in both traces, or finds it when another thread was faster. Unused
/// places of `literals` are null. Null when there is no memory for it.
const Site* registerSite(const Line& line, const Shape& shape,
                         const std::array<const char*, kMostLiterals>& literals) noexcept;

}  // namespace Impl
}  // namespace Pario
