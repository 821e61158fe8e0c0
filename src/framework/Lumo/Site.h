#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace [[using gnu: visibility("default")]] Lumo {

/// How a value lies in a record. All numbers are little-endian, nothing is aligned.
enum class Kind : std::uint8_t {
  text,         ///< its bytes and a NUL; a NUL inside is written as the four bytes \x00
  natural,      ///< an unsigned integer of 1, 2, 4 or 8 bytes
  integer,      ///< a signed integer of 1, 2, 4 or 8 bytes
  boolean,      ///< one byte, 0 or 1
  real,         ///< a double
  enumeration,  ///< an unsigned integer with names
  bytes,        ///< the memory of an object, `size` bytes
};

/// The type of a value. Constant, and as long-lived as the process; its address may be compared.
struct ValueType {
  Kind kind;
  std::uint16_t size;                             ///< bytes in a record; 0 for text
  std::string_view name;                          ///< as written in the code, with its namespace
  std::span<const std::string_view> labels = {};  ///< of an enumeration, by ordinal
};

/// A part of a message: literal text, or the place of a value (then `value` is not null).
struct Piece {
  std::string literal;
  const ValueType* value = nullptr;
};

/// A place in the source that writes records: all that is the same in every record of it, and so is
/// written down once. The message of a record is scope, form and pieces with nothing between.
struct Site {
  std::uint32_t id = 0;  ///< counts from 0 in the order of registration
  std::string facility;
  unsigned level = 0;
  std::string file;  ///< base name
  std::uint32_t line = 0;
  std::string scope;  ///< "void VelaPolicyMonitor::PolicyTranslateRootSm::"
  std::string form;   ///< "handlePolicySet(const String&)"
  std::vector<Piece> pieces;

  /// The form up to its parenthesis: "handlePolicySet".
  std::string_view handler() const noexcept;
  /// The message with %s in the place of each value and %% for a percent sign.
  std::string format() const;
};

/// Registers a site and gives it its id. Thread-safe; sites live as long as the process.
/// Directories in `file` are dropped.
const Site& registerSite(Site site);

/// The site with this id, or null.
const Site* siteOf(std::uint32_t id);

/// How many sites there are; their ids are those below.
std::uint32_t siteCount() noexcept;

}  // namespace Lumo
