#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <utility>

#include "Kel/TextTrace.h"

namespace Kel::TextTrace {
namespace {

/// Keeps SIGPIPE of one write from reaching the process: a reader that went away ends a trace, not
/// the agent. A signal that was already pending for another reason stays pending.
class PipeSignalHeld {
 public:
  PipeSignalHeld() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~PipeSignalHeld() {
    const int error = errno;
    if (!wasPending_) {
      const timespec now{};
      sigtimedwait(&pipe_, nullptr, &now);  // does not wait, so that nothing interrupts it
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = error;
  }
  PipeSignalHeld(const PipeSignalHeld&) = delete;
  PipeSignalHeld& operator=(const PipeSignalHeld&) = delete;

 private:
  sigset_t pipe_{};
  sigset_t before_{};
  bool wasPending_ = false;
};

/// Returns how many bytes of `text` were written.
std::size_t writeAll(int descriptor, std::string_view text) {
  std::size_t done = 0;
  while (done < text.size()) {
    errno = 0;  // for a descriptor that takes nothing and does not say why
    const ssize_t written = ::write(descriptor, text.data() + done, text.size() - done);
    if (written > 0) {
      done += static_cast<std::size_t>(written);
    } else if (errno != EINTR) {
      break;
    }
  }
  return done;
}

class DescriptorSink final : public Sink {
 public:
  DescriptorSink(int descriptor, bool own) : descriptor_(descriptor), own_(own) {
    struct stat status {};
    fstat(descriptor, &status);  // what cannot be asked is no regular file
    regular_ = S_ISREG(status.st_mode);
  }
  ~DescriptorSink() override {
    if (own_) {
      close(descriptor_);
    }
  }

  bool write(const Line& line) override {
    buffer_.clear();
    if (torn_) {
      buffer_ += '\n';  // the disk filled up in the middle of a line: begin on a line of its own
    }
    appendLine(buffer_, line);
    const int error = errno;  // of the program that is being traced
    const std::size_t written = regular_ ? writeAll(descriptor_, buffer_) : writeToPipe();
    errno = error;
    torn_ = (torn_ || written > 0) && written < buffer_.size();
    return written == buffer_.size();
  }

 private:
  std::size_t writeToPipe() {
    const PipeSignalHeld held;
    return writeAll(descriptor_, buffer_);
  }

  int descriptor_;
  bool own_;
  bool regular_ = false;
  bool torn_ = false;
  std::string buffer_;  // kept, so that a line needs no memory of its own
};

class CallbackSink final : public Sink {
 public:
  explicit CallbackSink(std::function<void(const Line&)> function)
      : function_(std::move(function)) {}
  bool write(const Line& line) override {
    function_(line);
    return true;
  }

 private:
  std::function<void(const Line&)> function_;
};

}  // namespace

Sink::~Sink() = default;

std::shared_ptr<Sink> standardErrorSink() {
  return std::make_shared<DescriptorSink>(STDERR_FILENO, false);
}

std::shared_ptr<Sink> fileSink(const std::string& path, std::string& why) {
  if (path == "-") {
    return standardErrorSink();
  }
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (descriptor < 0) {
    why = "cannot open trace file " + path + ": " + std::strerror(errno);
    return nullptr;
  }
  return std::make_shared<DescriptorSink>(descriptor, true);
}

std::shared_ptr<Sink> callbackSink(std::function<void(const Line&)> function) {
  return std::make_shared<CallbackSink>(std::move(function));
}

}  // namespace Kel::TextTrace
