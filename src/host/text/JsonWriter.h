#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Kel/ValueType.h"
#include "text/ByteSink.h"

namespace Host {

enum class Layout : std::uint8_t {
  pretty,   ///< for people: indented by two columns; what is short stays on one line
  compact,  ///< for programs: no blanks and no line breaks
};

/// Writes JSON to a sink, in large pieces.
class JsonWriter {
 public:
  JsonWriter(ByteSink& sink, Layout layout) : sink_(sink), pretty_(layout == Layout::pretty) {}
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  void openObject() { open('{'); }
  void closeObject() { close('}'); }
  void openArray() { open('['); }
  void closeArray() { close(']'); }
  /// An object that stays on one line: it has nothing but scalars.
  void openRecord();
  void closeRecord();
  /// An array of scalars: stays on one line if that is short.
  void openScalars();
  void closeScalars();

  /// The name of the member that comes next. Node names need no escapes.
  void name(std::string_view name);
  /// A scalar of the model.
  void value(const Kel::ValueType& type, const void* value);
  /// A scalar as JSON spells it.
  void spelled(std::string_view scalar);
  void text(std::string_view text);
  void boolean(bool value);
  void number(std::uint64_t value);
  /// A number with as many digits as it takes to read the same value again.
  void real(double value);

  /// Hands what is written so far to the sink, after a line break.
  void endLine();

 private:
  static constexpr std::size_t kPiece = 1U << 16U;
  static constexpr std::size_t kLineWidth = 100;

  void open(char bracket);
  void close(char bracket);
  void separate();
  void beginScalar();
  void breakLine();
  void scalarDone();
  void breakScalars();
  void flushWhenFull();

  ByteSink& sink_;
  const bool pretty_;
  std::string out_;
  std::size_t depth_ = 0;
  std::size_t lineStart_ = 0;  // in out_, of the line that is being written
  bool first_ = true;          // nothing yet in the innermost object or array
  bool named_ = false;         // a name stands before what comes next
  bool oneLine_ = false;       // in a record, or in scalars that have been short up to now
  bool scalars_ = false;
  std::vector<std::size_t> scalarBegins_;  // in out_, of the scalars since then
};

}  // namespace Host
