#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace Host {

/// A file, a socket or standard output could not be written.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Takes bytes in order.
class ByteSink {
 public:
  ByteSink() = default;
  ByteSink(const ByteSink&) = delete;
  ByteSink& operator=(const ByteSink&) = delete;
  virtual ~ByteSink() = default;

  /// Raises OutputError.
  virtual void write(std::string_view bytes) = 0;
};

/// Writes to an open descriptor, which stays open. `name` is for messages.
class DescriptorSink : public ByteSink {
 public:
  DescriptorSink(int descriptor, std::string name)
      : descriptor_(descriptor), name_(std::move(name)) {}
  void write(std::string_view bytes) override;

 private:
  int descriptor_;
  std::string name_;
};

/// Keeps the bytes in memory.
class TextSink : public ByteSink {
 public:
  void write(std::string_view bytes) override { text_ += bytes; }
  const std::string& text() const noexcept { return text_; }
  void clear() noexcept { text_.clear(); }

 private:
  std::string text_;
};

}  // namespace Host
