#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace Host {

/// What some editors put before text in UTF-8; no part of the text.
inline constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

/// A document's text in memory, with its name and its lines.
///
/// It is read at once and not mapped: a file that somebody shortens meanwhile must not end the
/// program. Behind the text lie `kPadding` zero bytes, which the JSON parser may look at.
class SourceText {
 public:
  static constexpr std::size_t kPadding = 64;

  /// Text that is at hand already.
  SourceText(std::string name, std::string_view text);

  /// Reads a file; "-" is standard input, then called "<stdin>". Null when it cannot be read: `why`
  /// says the reason. A byte-order mark at the start does not become part of the text.
  static std::unique_ptr<SourceText> read(const std::string& file, std::string& why);

  const std::string& name() const noexcept { return name_; }
  std::string_view text() const noexcept { return {bytes_.get() + start_, size_}; }

  /// A place as editors count it: both from 1, the column in characters.
  struct Place {
    std::size_t line;
    std::size_t column;
  };
  static Place placeIn(std::string_view text, std::size_t offset);
  Place placeOf(std::size_t offset) const { return placeIn(text(), offset); }

  /// The part of a line that is shown below a message, and what to underline there.
  struct Excerpt {
    std::string text;        ///< fit for a terminal: one column per character, nothing but text
    std::size_t caret;       ///< columns before the caret
    std::size_t underlined;  ///< columns to underline, at least 1
  };
  Excerpt excerpt(std::size_t offset, std::size_t length) const;

 private:
  explicit SourceText(std::string name) : name_(std::move(name)) {}
  bool readFrom(int file, std::size_t expected, std::string& why);
  void grow(std::size_t capacity);
  void finish(std::size_t size);

  std::string name_;
  std::unique_ptr<char[]> bytes_;
  std::size_t capacity_ = 0;
  std::size_t start_ = 0;
  std::size_t size_ = 0;
};

/// The bytes that the well-formed UTF-8 character at the start of `text` has; 0 when there is none.
std::size_t utf8Length(std::string_view text) noexcept;

}  // namespace Host
