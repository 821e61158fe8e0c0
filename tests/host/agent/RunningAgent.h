#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/Running.h"
#include "protocol/Descriptor.h"
#include "protocol/SocketPath.h"

namespace HostTests {

/// Asks again and again until `done` says yes; false when it does not within some seconds.
inline bool eventually(const std::function<bool()>& done) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!done()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    ::poll(nullptr, 0, 1);
  }
  return true;
}

/// A client of the control socket at a path.
class TestClient {
 public:
  explicit TestClient(const std::string& path)
      : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_un address = Host::socketAddress(path);
    if (::connect(socket_.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
        0) {
      socket_ = Host::Descriptor();
    }
  }

  bool isConnected() const { return socket_.isOpen(); }
  int descriptor() const { return socket_.number(); }
  /// False when the other side takes no more.
  bool send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(socket_.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent < 0) {
        return false;
      }
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }
  /// The next line without its end; "(end)" when there is none, "(nothing)" when none comes.
  std::string line() {
    std::size_t end = 0;
    while ((end = bytes_.find('\n')) == std::string::npos) {
      pollfd wanted{socket_.number(), POLLIN, 0};
      if (::poll(&wanted, 1, 20'000) != 1) {
        return "(nothing)";
      }
      char piece[1 << 16];
      const ssize_t got = ::recv(socket_.number(), piece, sizeof piece, 0);
      if (got <= 0) {
        return "(end)";
      }
      bytes_.append(piece, static_cast<std::size_t>(got));
    }
    std::string line = bytes_.substr(0, end);
    bytes_.erase(0, end + 1);
    return line;
  }
  /// Sends this and returns the next line.
  std::string ask(std::string_view text) {
    send(std::string(text) + "\n");
    return line();
  }
  /// Sends nothing more; answers may still come.
  void sendsNoMore() const { ::shutdown(socket_.number(), SHUT_WR); }
  void leave() { socket_ = Host::Descriptor(); }

 private:
  Host::Descriptor socket_;
  std::string bytes_;
};

/// `vpm agent` in a process of its own, with its socket and what it says in a folder.
class RunningAgent {
 public:
  static constexpr const char* kSocket = "s";

  /// `prepare` is called in the new process first.
  RunningAgent(const Folder& folder, const std::vector<std::string>& arguments,
               const std::function<void()>& prepare = {})
      : folder_(folder), socket_(folder.path(kSocket)) {
    std::vector<std::string> all{"agent", "--listen", socket_};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::cout.flush();
    process_ = ::fork();
    if (process_ == 0) {
      const int said =
          ::open(folder.path("said").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
      ::dup2(said, STDERR_FILENO);
      if (prepare) {
        prepare();
      }
      Host::DescriptorSink out(said, "standard output");
      ::_exit(Host::run(all, {out, std::cerr}));
    }
  }
  RunningAgent(const RunningAgent&) = delete;
  RunningAgent& operator=(const RunningAgent&) = delete;
  ~RunningAgent() {
    if (process_ > 0) {
      ::kill(process_, SIGKILL);
      exitCode();
    }
  }

  /// Waits until it listens, and connects.
  TestClient client() const {
    eventually([this] { return TestClient(socket_).isConnected() || said("error"); });
    return TestClient(socket_);
  }
  pid_t pid() const { return process_; }
  void signal(int number) const { ::kill(process_, number); }
  /// Waits until it has ended: its exit code, or minus the signal that has ended it.
  int exitCode() { return *end(0); }
  /// Likewise, if it has ended.
  std::optional<int> ended() { return end(WNOHANG); }
  int stop() {
    signal(SIGTERM);
    return exitCode();
  }

  const std::string& socket() const { return socket_; }
  /// What it has said so far.
  std::string said() const { return folder_.read("said"); }
  bool said(std::string_view text) const { return said().find(text) != std::string::npos; }
  /// Waits until it has said this.
  bool says(std::string_view text) const {
    return eventually([&] { return said(text); });
  }

 private:
  std::optional<int> end(int how) {
    int status = 0;
    if (::waitpid(process_, &status, how) != process_) {
      return std::nullopt;
    }
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

  const Folder& folder_;
  std::string socket_;
  pid_t process_ = -1;
};

}  // namespace HostTests
