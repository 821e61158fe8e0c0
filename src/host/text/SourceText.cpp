#include "text/SourceText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace Host {
namespace {

/// A descriptor that closes itself, unless it is standard input.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ > STDIN_FILENO) {
      ::close(number_);
    }
  }
  int number() const { return number_; }

 private:
  int number_;
};

bool isLineEnd(char c) { return c == '\n' || c == '\r'; }

}  // namespace

std::size_t utf8Length(std::string_view text) noexcept {
  const auto at = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const auto follows = [&](std::size_t i) { return (at(i) & 0xc0U) == 0x80; };
  const unsigned first = at(0);
  if (first < 0x80) {
    return text.empty() ? 0 : 1;
  }
  if (first >= 0xc2 && first <= 0xdf) {
    return follows(1) ? 2 : 0;
  }
  // Neither longer than needed, nor one half of a pair, nor above U+10FFFF.
  if (first >= 0xe0 && first <= 0xef) {
    const bool sound = (first != 0xe0 || at(1) >= 0xa0) && (first != 0xed || at(1) < 0xa0);
    return sound && follows(1) && follows(2) ? 3 : 0;
  }
  if (first >= 0xf0 && first <= 0xf4) {
    const bool sound = (first != 0xf0 || at(1) >= 0x90) && (first != 0xf4 || at(1) < 0x90);
    return sound && follows(1) && follows(2) && follows(3) ? 4 : 0;
  }
  return 0;
}

SourceText::SourceText(std::string name, std::string_view text) : name_(std::move(name)) {
  grow(text.size());
  std::copy(text.begin(), text.end(), bytes_.get());
  finish(text.size());
}

std::unique_ptr<SourceText> SourceText::read(const std::string& file, std::string& why) {
  const bool standardInput = file == "-";
  const Descriptor descriptor(standardInput ? STDIN_FILENO
                                            : ::open(file.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat about {};
  if (descriptor.number() < 0 || ::fstat(descriptor.number(), &about) != 0) {
    why = std::string("cannot be read: ") + std::strerror(errno);
    return nullptr;
  }
  if (S_ISDIR(about.st_mode)) {
    why = "is a folder; expected a document";
    return nullptr;
  }
  std::unique_ptr<SourceText> source(new SourceText(standardInput ? "<stdin>" : file));
  const auto expected = S_ISREG(about.st_mode) ? static_cast<std::size_t>(about.st_size) : 0;
  return source->readFrom(descriptor.number(), expected, why) ? std::move(source) : nullptr;
}

bool SourceText::readFrom(int file, std::size_t expected, std::string& why) {
  grow(expected + 1);  // one more, so that the end is seen without growing again
  std::size_t size = 0;
  for (;;) {
    const ssize_t got = ::read(file, bytes_.get() + size, capacity_ - size);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0) {
      why = std::string("cannot be read: ") + std::strerror(errno);
      return false;
    }
    if (got == 0) {
      break;
    }
    size += static_cast<std::size_t>(got);
    if (size == capacity_) {
      grow(2 * capacity_ + 65536);
    }
  }
  finish(size);
  return true;
}

void SourceText::grow(std::size_t capacity) {
  auto bytes = std::make_unique_for_overwrite<char[]>(capacity + kPadding);
  std::copy_n(bytes_.get(), capacity_, bytes.get());
  bytes_ = std::move(bytes);
  capacity_ = capacity;
}

void SourceText::finish(std::size_t size) {
  std::fill_n(bytes_.get() + size, kPadding, '\0');
  const bool marked = std::string_view(bytes_.get(), size).starts_with(kByteOrderMark);
  start_ = marked ? kByteOrderMark.size() : 0;
  size_ = size - start_;
}

SourceText::Place SourceText::placeIn(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  Place place{1 + static_cast<std::size_t>(std::ranges::count(before, '\n')), 1};
  const std::size_t lineEnd = before.rfind('\n');
  std::string_view line = before.substr(lineEnd == std::string_view::npos ? 0 : lineEnd + 1);
  while (!line.empty()) {
    // What is no character counts byte by byte.
    line.remove_prefix(std::max<std::size_t>(1, utf8Length(line)));
    ++place.column;
  }
  return place;
}

SourceText::Excerpt SourceText::excerpt(std::size_t offset, std::size_t length) const {
  // Documents may consist of a single line: no more than this is shown to either side.
  constexpr std::size_t kBefore = 60;
  constexpr std::size_t kAfter = 40;
  const std::string_view all = text();
  offset = std::min(offset, all.size());
  std::size_t begin = offset;
  while (begin > 0 && offset - begin < kBefore && !isLineEnd(all[begin - 1])) {
    --begin;
  }
  while (begin < offset && (static_cast<unsigned char>(all[begin]) & 0xc0U) == 0x80) {
    ++begin;
  }
  const bool cutBefore = begin > 0 && !isLineEnd(all[begin - 1]);

  Excerpt made{cutBefore ? "..." : "", cutBefore ? 3U : 0U, 1};
  std::size_t columns = made.caret;
  std::size_t at = begin;
  while (at < all.size() && !isLineEnd(all[at]) && at < offset + std::max(length, kAfter)) {
    const std::size_t bytes = utf8Length(all.substr(at));
    const auto first = static_cast<unsigned char>(all[at]);
    if (bytes == 0 || (first < 0x20 && first != '\t') || first == 0x7f) {
      made.text += '?';
    } else if (first == '\t') {
      made.text += ' ';
    } else {
      made.text += all.substr(at, bytes);
    }
    made.caret += at < offset ? 1 : 0;
    made.underlined += at > offset && at < offset + length ? 1 : 0;
    ++columns;
    at += std::max<std::size_t>(1, bytes);
    if (columns > made.caret + kAfter) {
      break;
    }
  }
  if (at < all.size() && !isLineEnd(all[at])) {
    made.text += "...";
  }
  return made;
}

}  // namespace Host
