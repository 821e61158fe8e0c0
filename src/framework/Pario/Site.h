#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Kel/TextTrace.h"
#include "Lumo/Site.h"
#include "Pario/Scope.h"

namespace [[using gnu: visibility("default")]] Pario {

/// Where a message comes from and how it begins. All texts must live as long as the process: their
/// addresses identify the site. The message is scope, form and pieces with nothing between.
struct Line {
  const char* facility;  ///< of the text trace: "VelaPolicyMonitor"
  const char* scope;     ///< "void VelaPolicyMonitor::PolicyTranslateRootSm::"
  const char* form;      ///< "handlePolicySet(const String&)"
  unsigned level;        ///< 0 to 9
  const char* file;      ///< source file, with or without directories
  std::uint32_t line;
  Place place = 0;  ///< to what the message belongs; no part of the site
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
/// A site is found by addresses and numbers, not by comparing text: scope, form, line, level, the
/// types of the pieces and the literals. A call site in the source always has the same ones, and
/// where two agree in all of them they write the same message. (The same text at another address,
/// from another library, is another site: twice in the metadata, the same line when read.)
struct Site {
  const char* form;
  const char* scope;
  const Shape* shape;
  std::uint32_t line;
  unsigned level;
  std::array<const char*, kMostLiterals> literals;
  const Site* next;  ///< in the same bucket
  std::uint32_t id;  ///< of `binary`
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
  const auto address = reinterpret_cast<std::uintptr_t>(line.form);
  const std::uint64_t mixed = (address + line.line * 64U + line.level) * 0x9e3779b97f4a7c15U;
  return buckets[mixed >> (64U - kBucketBits)];
}

/// Whether `site` is that of a call, as far as `line` and `shape` tell.
inline bool isSiteOf(const Site& site, const Line& line, const Shape& shape) noexcept {
  return site.form == line.form && site.line == line.line && site.shape == &shape &&
         site.scope == line.scope && site.level == line.level;
}

/// Registers the site of a call in both traces, or finds it when another thread was faster. Unused
/// places of `literals` are null. Null when there is no memory for it.
const Site* registerSite(const Line& line, const Shape& shape,
                         const std::array<const char*, kMostLiterals>& literals) noexcept;

}  // namespace Impl
}  // namespace Pario
