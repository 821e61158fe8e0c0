#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Host {

/// Takes a text apart into its lines, which end with LF or CRLF; the last one may end with the
/// text.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}

  /// The next line without its end; none behind the last one.
  std::optional<std::string_view> next();
  /// The number of the line that `next` has returned, counted from 1.
  std::size_t number() const { return number_; }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t number_ = 0;
};

/// Hands out the lines of standard input as they come.
class InputLines {
 public:
  /// The next line without its end, valid until the next call, with SourceText::kPadding bytes
  /// behind it; none behind the last one. Raises std::runtime_error when it cannot be read.
  std::optional<std::string_view> next();
  std::size_t number() const { return number_; }

 private:
  bool fill();

  std::string buffer_;
  std::size_t begin_ = 0;    // of what was not handed out yet
  std::size_t scanned_ = 0;  // no line end up to here
  std::size_t end_ = 0;
  bool over_ = false;
  std::size_t number_ = 0;
};

/// Whether a line has nothing but blanks.
bool isBlank(std::string_view line);

}  // namespace Host
