#include "state/SnapshotChild.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is not in <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "text/ByteSink.h"
#include "text/Concat.h"

namespace Host {
namespace {

/// In the child: the work, and its outcome into the pipe.
[[noreturn]] void runChild(const std::function<void()>& work, int pipe, pid_t parent) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) {
    ::_exit(1);
  }
  constexpr int kPipe = STDERR_FILENO + 1;
  if (pipe != kPipe) {
    ::dup2(pipe, kPipe);
  }
  ::close_range(kPipe + 1, ~0U, 0);
  try {
    work();
  } catch (const std::exception& error) {
    const std::string_view why = error.what();
    (void)!::write(kPipe, why.data(), why.size());
    ::_exit(1);
  }
  ::_exit(0);
}

}  // namespace

void SnapshotChild::start(const std::function<void()>& work) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
    throw OutputError(concat({"no pipe for a child process: ", std::strerror(errno)}));
  }
  const pid_t parent = ::getpid();
  const pid_t child = ::fork();
  if (child == 0) {
    runChild(work, ends[1], parent);
  }
  const int error = errno;
  ::close(ends[1]);
  if (child < 0) {
    ::close(ends[0]);
    throw OutputError(concat({"no child process: ", std::strerror(error)}));
  }
  child_ = child;
  pipe_ = ends[0];
  said_.clear();
}

std::optional<std::string> SnapshotChild::outcome() {
  while (running()) {
    char piece[512];
    const ssize_t got = ::read(pipe_, piece, sizeof piece);
    if (got > 0) {
      said_.append(piece, static_cast<std::size_t>(got));
    } else if (got == 0) {
      return reap();
    } else if (errno != EINTR) {
      break;  // nothing has come yet
    }
  }
  return std::nullopt;
}

void SnapshotChild::stop() {
  if (running()) {
    ::kill(child_, SIGKILL);
    reap();
  }
}

std::string SnapshotChild::reap() {
  ::close(std::exchange(pipe_, -1));
  int status = 0;
  while (::waitpid(child_, &status, 0) < 0 && errno == EINTR) {
  }
  child_ = -1;
  if (WIFSIGNALED(status)) {
    return concat({"its process was ended by signal ", std::to_string(WTERMSIG(status))});
  }
  return status == 0 || !said_.empty() ? said_ : std::string("its process has failed");
}

}  // namespace Host
