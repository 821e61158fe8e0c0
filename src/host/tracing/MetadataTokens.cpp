#include "tracing/MetadataTokens.h"

#include <algorithm>
#include <utility>

#include "text/Concat.h"
#include "tracing/TraceError.h"

namespace Host {
namespace {

bool isWordByte(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '_' || byte == '.';
}

}  // namespace

MetadataTokens::MetadataTokens(std::string_view text, std::string name)
    : text_(text), name_(std::move(name)) {
  advance();
}

std::string MetadataTokens::take() {
  std::string taken = now_;
  advance();
  return taken;
}

std::string MetadataTokens::takeText() {
  if (kind_ != Kind::text) {
    fail("a text in double quotes");
  }
  return take();
}

bool MetadataTokens::takeIf(std::string_view wanted) {
  const bool found = kind_ == Kind::word && now_ == wanted;
  if (found) {
    advance();
  }
  return found;
}

void MetadataTokens::expect(std::string_view wanted) {
  if (!takeIf(wanted)) {
    fail(concat({"\"", wanted, "\""}));
  }
}

void MetadataTokens::fail(std::string_view expected) const {
  const std::string_view before = text_.substr(0, begin_);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  const std::string found = atEnd() ? "the end of the file" : concat({"\"", now_, "\""});
  throw TraceError(concat({name_, ":", std::to_string(line), ": expected ", expected, ", found ",
                           found, "; the file is cut off, or another tracer wrote it"}));
}

void MetadataTokens::skipBlanks() {
  while (at(at_) == ' ' || at(at_) == '\n') {
    ++at_;
  }
  if (text_.substr(at_, 2) == "/*") {
    at_ = std::min(text_.find("*/", at_), text_.size() - 2) + 2;
    skipBlanks();
  }
}

void MetadataTokens::advance() {
  skipBlanks();
  begin_ = at_;
  now_.clear();
  kind_ = at_ >= text_.size() ? Kind::end : Kind::word;
  if (at(at_) == '"') {
    kind_ = Kind::text;
    readText();
    return;
  }
  while (isWordByte(at(at_))) {
    now_ += text_[at_++];
  }
  if (now_.empty() && kind_ == Kind::word) {
    now_ = text_[at_++];
  }
}

void MetadataTokens::readText() {
  for (++at_; at(at_) != '"'; ++at_) {
    if (at_ >= text_.size()) {
      kind_ = Kind::end;
      fail("the end of a text");
    }
    char byte = text_[at_];
    if (byte == '\\') {
      byte = at(++at_);
      if (byte >= '0' && byte <= '3') {  // three octal digits
        byte = static_cast<char>((byte - '0') * 64 + (at(at_ + 1) - '0') * 8 + (at(at_ + 2) - '0'));
        at_ += 2;
      }
    }
    now_ += byte;
  }
  ++at_;
}

}  // namespace Host
