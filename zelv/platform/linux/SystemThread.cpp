#include "zelv/platform/linux/SystemThread.h"

#include <pthread.h>

#include <csignal>
#include <cstdio>
#include <initializer_list>

namespace Zelv::Platform {
namespace {

/// Blocks signals for a scope; a thread inherits the mask of the one that starts it.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t blocked;
    ::sigfillset(&blocked);
    for (int const fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS, SIGPROF}) {
      ::sigdelset(&blocked, fault);
    }
    ::pthread_sigmask(SIG_BLOCK, &blocked, &mBefore);
  }
  SignalsBlocked(SignalsBlocked const&) = delete;
  SignalsBlocked& operator=(SignalsBlocked const&) = delete;
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }

 private:
  sigset_t mBefore;
};

}  // namespace

bool SystemThread::Start(std::size_t aStack, void* (*aMain)(void*), void* aArgument) {
  pthread_attr_t attributes;
  if (::pthread_attr_init(&attributes) != 0) {
    return false;
  }
  SignalsBlocked const blocked;
  pthread_t thread;
  bool const started = ::pthread_attr_setstacksize(&attributes, aStack) == 0 &&
                       ::pthread_create(&thread, &attributes, aMain, aArgument) == 0;
  ::pthread_attr_destroy(&attributes);
  return started;
}

void SystemThread::SetName(char const* aName) {
  char name[16];
  std::snprintf(name, sizeof name, "%s", aName);
  ::pthread_setname_np(::pthread_self(), name);
}

}  // namespace Zelv::Platform
