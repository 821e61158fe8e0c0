#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "protocol/Descriptor.h"
#include "text/LineReader.h"

namespace Host {

/// A connection to a running agent: lines go out, lines come back. Neither side ever waits for the
/// other to read: what cannot be sent yet is kept, and what comes meanwhile too.
///
/// All of it raises std::runtime_error when there is no agent, or none any more: with the socket
/// that was tried, the reason, and what to do.
class Connection {
 public:
  /// Connects to the agent at `asked`, or where agents listen unless told otherwise.
  explicit Connection(const std::string& asked);

  const std::string& socket() const { return socket_; }

  /// Sends whole lines, with their ends.
  void send(std::string_view lines) { unsent_ += lines; }
  std::size_t unsent() const { return unsent_.size() - sent_; }

  /// The next line that the agent has said, valid until the next call of anything here; none when
  /// no whole line has come yet.
  std::optional<std::string_view> ready() { return said_.ready(); }
  /// To be called when nothing is ready. Sends and reads what it can; waits until there was
  /// something to do, or until `other` (a descriptor; -1: none) has something to read. Whether it
  /// has.
  bool pump(int other = -1);
  /// The next line that the agent says; waits for it.
  std::string_view receive();

 private:
  void write();
  void read();
  [[noreturn]] void gone(const char* why) const;

  std::string socket_;
  Descriptor descriptor_;
  InputLines said_;
  std::string unsent_;
  std::size_t sent_ = 0;  // of unsent_
};

}  // namespace Host
