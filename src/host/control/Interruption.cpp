#include "control/Interruption.h"

#include <sys/signalfd.h>

namespace Host {

Interruption::Interruption() {
  ::sigemptyset(&signals_);
  ::sigaddset(&signals_, SIGINT);
  ::sigaddset(&signals_, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &signals_, &before_);
  descriptor_ = Descriptor(::signalfd(-1, &signals_, SFD_CLOEXEC | SFD_NONBLOCK));
}

Interruption::~Interruption() {
  // What has come is taken, or it would end the program as soon as the signals may again.
  signalfd_siginfo taken{};
  while (::read(descriptor_.number(), &taken, sizeof taken) > 0) {
  }
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace Host
