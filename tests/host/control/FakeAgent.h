#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "host/Running.h"
#include "protocol/Descriptor.h"
#include "protocol/SocketPath.h"
#include "text/LineReader.h"

namespace HostTests {

/// Stands in for an agent: takes one connection after the other, and says what a test wants said.
class FakeAgent {
 public:
  /// What to say to a line, whole lines with their ends; kClose also ends the connection.
  using Script = std::function<std::string(std::size_t number, const std::string& line)>;
  static constexpr char kClose = '\0';

  explicit FakeAgent(Script script) : script_(std::move(script)) {
    const sockaddr_un address = Host::socketAddress(socket());
    EXPECT_EQ(
        ::bind(listening_.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
        0);
    EXPECT_EQ(::listen(listening_.number(), 4), 0);
    thread_ = std::thread([this] { serve(); });
  }
  FakeAgent(const FakeAgent&) = delete;
  FakeAgent& operator=(const FakeAgent&) = delete;
  ~FakeAgent() { join(); }

  std::string socket() const { return folder_.path("vpm.sock"); }
  const Folder& folder() const { return folder_; }
  /// `vpm ctl --socket ...` with these arguments.
  Outcome ctl(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"ctl", "--socket", socket()});
    return runVpm(arguments);
  }
  /// The socket to who is connected now.
  int client() const { return client_; }
  /// The lines it was told, of all connections; it is over after that.
  const std::vector<std::string>& told() {
    join();
    return told_;
  }

 private:
  void join() {
    if (thread_.joinable()) {
      ::shutdown(listening_.number(), SHUT_RDWR);
      thread_.join();
    }
  }
  void serve() {
    for (;;) {
      const Host::Descriptor client(::accept(listening_.number(), nullptr, nullptr));
      if (!client.isOpen()) {
        return;
      }
      client_ = client.number();
      Host::InputLines lines(client.number(), "the client");
      while (const auto line = lines.next()) {
        told_.emplace_back(*line);
        std::string said = script_(lines.number(), told_.back());
        const bool close = said.ends_with(kClose);
        said.resize(said.size() - (close ? 1U : 0U));
        for (std::size_t at = 0; at < said.size();) {
          const ssize_t sent =
              ::send(client.number(), said.data() + at, said.size() - at, MSG_NOSIGNAL);
          if (sent < 0) {
            break;
          }
          at += static_cast<std::size_t>(sent);
        }
        if (close) {
          break;
        }
      }
    }
  }

  Script script_;
  Folder folder_;
  Host::Descriptor listening_{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  std::atomic<int> client_{-1};
  std::vector<std::string> told_;
  std::thread thread_;
};

/// One that says the same to every line, with the number of the line in place of N.
inline FakeAgent::Script always(const std::string& members) {
  return [members](std::size_t number, const std::string&) {
    return R"({"line":)" + std::to_string(number) + members + "}\n";
  };
}

}  // namespace HostTests
