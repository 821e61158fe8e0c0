#include "model/reference/Ending.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace Reference {
namespace {

constexpr int kByItself = 42;

const Text* logToTell;
int whereToTell;

// What abort() is followed by.
void tellLog(int /*signal*/) {
  const bool told = ::write(whereToTell, logToTell->data(), logToTell->size()) ==
                    static_cast<ssize_t>(logToTell->size());
  ::_exit(told ? kByItself : 1);
}

Text contentOf(int file) {
  Text content(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
  const bool whole =
      ::pread(file, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size());
  ::close(file);
  return whole ? content : "(cannot be read)";
}

}  // namespace

Ending endingOf(LibrarySide& library, const std::function<void()>& act) {
  const int log = ::memfd_create("log", 0);
  const int said = ::memfd_create("said", 0);
  const pid_t child = ::fork();
  if (child == 0) {
    logToTell = &library.log;
    whereToTell = log;
    std::signal(SIGABRT, tellLog);
    std::signal(SIGSEGV, SIG_DFL);
    static_cast<void>(::dup2(said, STDERR_FILENO));
    act();
    ::_exit(0);
  }
  int status = 0;
  const bool waited = ::waitpid(child, &status, 0) == child;
  return {.byItself = waited && WIFEXITED(status) && WEXITSTATUS(status) == kByItself,
          .log = contentOf(log),
          .said = contentOf(said)};
}

}  // namespace Reference
