#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace Host {

/// The words, texts and signs of a trace's metadata, one after the other. What is not as expected
/// raises TraceError with the line.
class MetadataTokens {
 public:
  /// `name` is that of the file, for messages.
  MetadataTokens(std::string_view text, std::string name);

  bool atEnd() const { return kind_ == Kind::end; }
  /// The present one; of a text what stands between the quotes.
  const std::string& now() const { return now_; }

  std::string take();
  std::string takeText();
  template <class Number>
  Number takeNumber() {
    Number number = 0;
    const char* const end = now_.data() + now_.size();
    if (kind_ != Kind::word || std::from_chars(now_.data(), end, number).ptr != end) {
      fail("a number");
    }
    advance();
    return number;
  }
  bool takeIf(std::string_view wanted);
  void expect(std::string_view wanted);
  [[noreturn]] void fail(std::string_view expected) const;

 private:
  enum class Kind : std::uint8_t { word, text, end };

  char at(std::size_t place) const { return place < text_.size() ? text_[place] : '\0'; }
  void skipBlanks();
  void advance();
  void readText();

  std::string_view text_;
  std::string name_;
  std::size_t at_ = 0;
  std::size_t begin_ = 0;  // of the present one
  Kind kind_ = Kind::end;
  std::string now_;
};

}  // namespace Host
