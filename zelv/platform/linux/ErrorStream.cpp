#include "zelv/platform/linux/ErrorStream.h"

#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>

namespace Zelv::Platform {
namespace {

/// Keeps a SIGPIPE that this thread causes from being delivered, and leaves alone one that was
/// pending before.
class PipeSignalHeldBack {
 public:
  PipeSignalHeldBack() {
    sigset_t pending;
    ::sigemptyset(&mPipe);
    ::sigaddset(&mPipe, SIGPIPE);
    ::sigpending(&pending);
    mWasPending = ::sigismember(&pending, SIGPIPE) == 1;
    ::pthread_sigmask(SIG_BLOCK, &mPipe, &mBefore);
  }
  PipeSignalHeldBack(PipeSignalHeldBack const&) = delete;
  PipeSignalHeldBack& operator=(PipeSignalHeldBack const&) = delete;
  ~PipeSignalHeldBack() { ::pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }

  void discard() const {
    timespec const now{};
    if (!mWasPending) {
      ::sigtimedwait(&mPipe, nullptr, &now);
    }
  }

 private:
  sigset_t mPipe;
  sigset_t mBefore;
  bool mWasPending;
};

void appendShown(std::string& aLine, char aCharacter) {
  static char const digits[] = "0123456789abcdef";
  auto const byte = static_cast<unsigned char>(aCharacter);
  if (byte == '\n') {
    aLine += "\\n";
  } else if (byte < 0x20 || byte == 0x7f) {
    aLine += {'\\', 'x', digits[byte >> 4], digits[byte & 0xf]};
  } else {
    aLine += aCharacter;
  }
}

}  // namespace

void ErrorStream::WriteLine(std::string const& aText) {
  std::string line;
  line.reserve(aText.size() + 1);
  for (char const character : aText) {
    appendShown(line, character);
  }
  line += '\n';
  PipeSignalHeldBack const held;
  ssize_t written;
  do {
    written = ::write(STDERR_FILENO, line.data(), line.size());
  } while (written < 0 && errno == EINTR);
  if (written < 0 && errno == EPIPE) {
    held.discard();
  }
}

}  // namespace Zelv::Platform
