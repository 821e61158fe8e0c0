#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Host {

/// Takes a text apart into its lines, which end with LF or CRLF; the last one may end with the
/// text. A byte-order mark does not become part of the first one.
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

/// Hands out such lines of a descriptor, which stays open, as they come.
class InputLines {
 public:
  /// Of standard input.
  InputLines();
  /// `name` is for messages.
  InputLines(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {}

  /// The next line without its end, valid until the next call, with SourceText::kPadding bytes
  /// behind it; none behind the last one. Waits for it. Raises std::runtime_error when it cannot be
  /// read.
  std::optional<std::string_view> next();
  /// Likewise, without reading: none when no whole line was read yet. The last line counts as
  /// whole once all is over.
  std::optional<std::string_view> ready();
  /// Reads once what there is; of a non-blocking descriptor that may be nothing.
  void fill();
  /// Whether the end was read; then `ready` has the rest.
  bool over() const { return over_; }
  /// How many bytes were read and not handed out yet.
  std::size_t waiting() const { return end_ - begin_; }
  std::size_t number() const { return number_; }
  /// Whether the line that was handed out last had an end; without one it may be cut short.
  bool isWhole() const { return whole_; }

 private:
  int descriptor_;
  std::string name_;
  std::string buffer_;
  std::size_t begin_ = 0;    // of what was not handed out yet
  std::size_t scanned_ = 0;  // no line end up to here
  std::size_t end_ = 0;
  bool over_ = false;
  bool whole_ = false;
  std::size_t number_ = 0;
};

/// Whether a line has nothing but blanks.
bool isBlank(std::string_view line);

}  // namespace Host
