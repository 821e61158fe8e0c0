#include "agent/Signals.h"

#include <pthread.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>

namespace Host {

Signals::Signals()
    : pipeBefore_(std::signal(SIGPIPE, SIG_IGN)), sizeBefore_(std::signal(SIGXFSZ, SIG_IGN)) {
  sigset_t ours{};
  sigemptyset(&ours);
  for (const int each : {SIGTERM, SIGINT, SIGHUP}) {
    sigaddset(&ours, each);
  }
  ::pthread_sigmask(SIG_BLOCK, &ours, &before_);
  descriptor_ = Descriptor(::signalfd(-1, &ours, SFD_NONBLOCK | SFD_CLOEXEC));
  if (!descriptor_.isOpen()) {
    failWith("signals cannot be received");
  }
}

Signals::~Signals() {
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  std::signal(SIGPIPE, pipeBefore_);
  std::signal(SIGXFSZ, sizeBefore_);
}

void Signals::follow(Loop& loop) { loop.add(descriptor_.number(), EPOLLIN, *this); }

void Signals::ready(std::uint32_t /*events*/) {
  signalfd_siginfo info{};
  while (::read(descriptor_.number(), &info, sizeof info) == sizeof info) {
    if (info.ssi_signo == SIGHUP) {
      reload_ = true;
    } else {
      stop_ = info.ssi_signo == SIGTERM ? "SIGTERM" : "SIGINT";
    }
  }
}

}  // namespace Host
