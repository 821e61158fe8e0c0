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
  signalfd_siginfo taken{};
  if (::read(descriptor_.number(), &taken, sizeof taken) > 0) {
    return;  // the program is on its way out: a second signal would only make its end look bad
  }
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace Host
