#pragma once

#include <atomic>
#include <compare>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace [[using gnu: visibility("default")]] Brix {

/// Immutable text, 8 bytes wide, shared by count: a copy costs an increment and no memory, so a
/// name that is key of an entity, of its mirror image and of a state machine is stored once.
///
/// The hash is computed when the text is made and kept beside it. Text is compared byte by byte,
/// bytes as unsigned numbers. A default-constructed string is empty and owns nothing.
class String {
 public:
  String() noexcept = default;
  /// A copy of the bytes, whatever they are.
  String(std::string_view text);  // NOLINT(google-explicit-constructor)
  /// A copy; null is the empty text.
  String(const char* text)
      : String(std::string_view(text)) {}  // NOLINT(google-explicit-constructor)
  /// A copy of the bytes, whatever they are.
  String(const std::string& text) : String(std::string_view(text)) {}  // NOLINT
  String(const String& other) noexcept : text_(other.text_) { retain(); }
  String(String&& other) noexcept : text_(other.text_) { other.text_ = nullptr; }
  ~String() { release(); }
  String& operator=(const String& other) noexcept {
    String(other).swap(*this);
    return *this;
  }
  String& operator=(String&& other) noexcept {
    String(std::move(other)).swap(*this);
    return *this;
  }
  void swap(String& other) noexcept {
    Text* mine = text_;
    text_ = other.text_;
    other.text_ = mine;
  }

  std::string_view view() const noexcept {
    return text_ == nullptr ? std::string_view() : std::string_view(bytes(), text_->size);
  }
  operator std::string_view() const noexcept {
    return view();
  }  // NOLINT(google-explicit-constructor)
  /// The text followed by a NUL; stays valid as long as any copy of this string.
  const char* c_str() const noexcept { return text_ == nullptr ? "" : bytes(); }
  std::size_t size() const noexcept { return text_ == nullptr ? 0 : text_->size; }
  bool empty() const noexcept { return text_ == nullptr; }
  std::uint32_t hash() const noexcept { return text_ == nullptr ? hashOf({}) : text_->hash; }

  /// The hash that a string of this text has: for a look-up without building the string.
  static std::uint32_t hashOf(std::string_view text) noexcept;

  friend bool operator==(const String& a, const String& b) noexcept {
    return a.text_ == b.text_ || a.view() == b.view();
  }
  friend bool operator==(const String& a, std::string_view b) noexcept { return a.view() == b; }
  friend bool operator==(const String& a, const char* b) noexcept { return a.view() == b; }
  friend bool operator==(const String& a, const std::string& b) noexcept { return a.view() == b; }
  friend std::strong_ordering operator<=>(const String& a, const String& b) noexcept {
    return a.view() <=> b.view();
  }

 private:
  struct Text {
    mutable std::atomic<std::uint32_t> count;
    std::uint32_t size;
    std::uint32_t hash;
  };

  const char* bytes() const noexcept { return reinterpret_cast<const char*>(text_ + 1); }
  void retain() const noexcept;
  void release() noexcept;

  Text* text_ = nullptr;  // the bytes and a NUL follow it in the same block
};

/// Text protocol of value types: the text itself, and any text is a string.
inline void kelAppend(std::string& out, const String& text) { out += text.view(); }
bool kelParse(std::string_view text, String& value, std::string& why);

std::ostream& operator<<(std::ostream& out, const String& text);

}  // namespace Brix

template <>
struct std::hash<Brix::String> {
  std::size_t operator()(const Brix::String& text) const noexcept { return text.hash(); }
};
