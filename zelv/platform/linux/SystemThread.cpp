#include "zelv/platform/linux/SystemThread.h"

#include <link.h>
#include <pthread.h>
#include <unistd.h>

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

// The system cuts the thread's own variables of all libraries, and the guard page, out of the stack
// that it is asked for. Mostly that is little, but with a tool that watches threads it is most of
// it.
std::size_t neededBeside() {
  std::size_t size = 0;
  ::dl_iterate_phdr(
      [](dl_phdr_info* aObject, std::size_t, void* aSize) {
        for (int i = 0; i < aObject->dlpi_phnum; ++i) {
          auto const& header = aObject->dlpi_phdr[i];
          if (header.p_type == PT_TLS) {
            *static_cast<std::size_t*>(aSize) += header.p_memsz + header.p_align;
          }
        }
        return 0;
      },
      &size);
  constexpr std::size_t cSpare = 16384;
  return size + cSpare;
}

// In whole pages, as the system wants it. A size that no machine has stays one.
std::size_t withNeeded(std::size_t aStack) {
  std::size_t const page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  std::size_t const size = aStack + neededBeside() + page;
  return size < aStack ? aStack : size / page * page;
}

}  // namespace

bool SystemThread::Start(std::size_t aStack, void* (*aMain)(void*), void* aArgument) {
  pthread_attr_t attributes;
  if (::pthread_attr_init(&attributes) != 0) {
    return false;
  }
  SignalsBlocked const blocked;
  pthread_t thread;
  bool const started = ::pthread_attr_setstacksize(&attributes, withNeeded(aStack)) == 0 &&
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
