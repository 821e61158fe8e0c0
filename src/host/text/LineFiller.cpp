#include "text/LineFiller.h"

#include <algorithm>

namespace Host {

std::size_t columnsOf(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80U; }));
}

LineFiller::LineFiller(std::string& out, std::size_t first, std::size_t others)
    : out_(out), others_(others), column_(first) {
  out_.append(first, ' ');
}

void LineFiller::put(std::string_view text, std::string_view between) {
  const std::size_t width = columnsOf(text);
  if (!empty_ && column_ + between.size() + width > kColumns) {
    breakLine(others_);
  }
  if (!empty_) {
    out_ += between;
    column_ += between.size();
  }
  out_ += text;
  column_ += width;
  empty_ = false;
}

void LineFiller::words(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    if (end != 0) {
      word(text.substr(0, end));
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void LineFiller::path(std::string_view path) {
  std::string_view between = " ";
  while (!path.empty()) {
    // A slash in a key is none between steps.
    std::size_t end = 1;
    for (bool inKey = false; end < path.size() && (inKey || path[end] != '/'); ++end) {
      inKey = (inKey || path[end] == '[') && path[end] != ']';
    }
    put(path.substr(0, end), between);
    between = "";
    path.remove_prefix(end);
  }
}

void LineFiller::tab(std::size_t column) {
  if (column_ >= column) {
    breakLine(column);
  } else {
    out_.append(column - column_, ' ');
    column_ = column;
  }
  empty_ = true;
}

void LineFiller::breakLine(std::size_t indent) {
  out_ += '\n';
  out_.append(indent, ' ');
  column_ = indent;
  empty_ = true;
}

}  // namespace Host
