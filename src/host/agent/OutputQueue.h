#pragma once

#include "text/ByteSink.h"

namespace Host {

/// Bytes on their way to a socket that takes them when it can.
class OutputQueue : public ByteSink {
 public:
  void write(std::string_view bytes) override { bytes_ += bytes; }

  /// Sends as much as `socket` takes now. False: nobody will read any of it,
  /// and it is dropped.
  bool sendTo(int socket);
  /// Puts `bytes` in the place of those from `begin` to `end`, counted from the next one to be
  /// sent.
  void replace(std::size_t begin, std::size_t end, std::string_view bytes) {
    bytes_.replace(sent_ + begin, end - begin, bytes);
  }
  std::size_t size() const { return bytes_.size() - sent_; }

 private:
  std::string bytes_;
  std::size_t sent_ = 0;
};

}  // namespace Host
