#include "text/LineReader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "text/Concat.h"
#include "text/SourceText.h"

namespace Host {
namespace {

/// The line with this number, as it was read.
std::string_view bare(std::string_view line, std::size_t number) {
  if (number == 1 && line.starts_with(kByteOrderMark)) {
    line.remove_prefix(kByteOrderMark.size());
  }
  return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

}  // namespace

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

std::optional<std::string_view> Lines::next() {
  if (at_ >= text_.size()) {
    return std::nullopt;
  }
  ++number_;
  const std::size_t end = std::min(text_.find('\n', at_), text_.size());
  const std::string_view line = text_.substr(at_, end - at_);
  at_ = end + 1;
  return bare(line, number_);
}

InputLines::InputLines() : InputLines(STDIN_FILENO, "standard input") {}

std::optional<std::string_view> InputLines::next() {
  for (;;) {
    if (const auto line = ready(); line || over_) {
      return line;
    }
    fill();
  }
}

std::optional<std::string_view> InputLines::ready() {
  const std::string_view read = std::string_view(buffer_).substr(0, end_);
  const std::size_t lineEnd = read.find('\n', scanned_);
  if (lineEnd == std::string_view::npos && (!over_ || begin_ == end_)) {
    scanned_ = end_;
    return std::nullopt;
  }
  whole_ = lineEnd != std::string_view::npos;
  const std::size_t end = std::min(lineEnd, end_);
  const std::string_view line = read.substr(begin_, end - begin_);
  begin_ = scanned_ = std::min(end + 1, end_);
  ++number_;
  return bare(line, number_);
}

void InputLines::fill() {
  constexpr std::size_t kPiece = 1U << 16U;
  buffer_.erase(0, begin_);
  end_ -= begin_;
  scanned_ -= begin_;
  begin_ = 0;
  buffer_.resize(std::max(buffer_.size(), end_ + kPiece + SourceText::kPadding));
  for (;;) {
    const ssize_t got = ::read(descriptor_, buffer_.data() + end_, kPiece);
    if (got >= 0) {
      end_ += static_cast<std::size_t>(got);
      over_ = got == 0;
      return;
    }
    if (errno == EAGAIN) {
      return;
    }
    if (errno != EINTR) {
      throw std::runtime_error(concat({name_, " cannot be read: ", std::strerror(errno)}));
    }
  }
}

}  // namespace Host
