#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Host {

/// How many columns a terminal has, for all that is laid out for people.
inline constexpr std::size_t kColumns = 80;

/// How many columns `text` takes: its characters.
std::size_t columnsOf(std::string_view text);

/// Fills lines with words, as wide as a terminal. Only a word that is wider itself makes a line
/// wider.
class LineFiller {
 public:
  /// Writes to `out`, behind which a line begins. The first line is indented by `first` columns,
  /// the others by `others`.
  LineFiller(std::string& out, std::size_t first, std::size_t others);

  /// The next word, behind a blank or at the start of a line.
  void word(std::string_view word) { put(word, " "); }
  /// All words of a text.
  void words(std::string_view text);
  /// The steps of a path: it is broken between them.
  void path(std::string_view path);
  /// Goes on at this column, in the next line if this one is beyond it.
  void tab(std::size_t column);
  void end() { out_ += '\n'; }

 private:
  void put(std::string_view text, std::string_view between);
  void breakLine(std::size_t indent);

  std::string& out_;
  std::size_t others_;
  std::size_t column_;
  bool empty_ = true;  // nothing on this line yet but blanks
};

}  // namespace Host
