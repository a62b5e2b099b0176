#include "apps/StopSignal.h"

#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace ZelvApps {

StopSignal::StopSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  mDescriptor = ::signalfd(-1, &signals, SFD_CLOEXEC);
  if (mDescriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "signalfd");
  }
}

StopSignal::~StopSignal() {
  ::close(mDescriptor);
}

}  // namespace ZelvApps
