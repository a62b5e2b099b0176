#include "zelv/platform/Shell.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "zelv/platform/Directories.h"
#include "zelv/platform/linux/ShellText.h"

namespace Zelv::Platform {
namespace {

int syncWritable() {
  int const directory = ::open(Directories::Writable().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory < 0) {
    return -1;
  }
  int const result = ::syncfs(directory);
  ::close(directory);
  return result == 0 ? 0 : -1;
}

/// What a child starts with: the standard descriptors, no signal blocked, none ignored. The
/// library's threads block signals, and a child would inherit that.
class ChildSetup {
 public:
  ChildSetup() {
    mGood = ::posix_spawn_file_actions_init(&mActions) == 0;
    mGood = ::posix_spawnattr_init(&mAttributes) == 0 && mGood;
    sigset_t none;
    sigset_t all;
    ::sigemptyset(&none);
    ::sigfillset(&all);
    mGood =
        mGood && ::posix_spawn_file_actions_addclosefrom_np(&mActions, STDERR_FILENO + 1) == 0 &&
        ::posix_spawnattr_setsigmask(&mAttributes, &none) == 0 &&
        ::posix_spawnattr_setsigdefault(&mAttributes, &all) == 0 &&
        ::posix_spawnattr_setflags(&mAttributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF) ==
            0;
  }
  ChildSetup(ChildSetup const&) = delete;
  ChildSetup& operator=(ChildSetup const&) = delete;
  ~ChildSetup() {
    ::posix_spawn_file_actions_destroy(&mActions);
    ::posix_spawnattr_destroy(&mAttributes);
  }

  bool spawn(pid_t& aChild, char* const* aArguments) {
    return mGood &&
           ::posix_spawn(&aChild, aArguments[0], &mActions, &mAttributes, aArguments, environ) == 0;
  }

 private:
  posix_spawn_file_actions_t mActions;
  posix_spawnattr_t mAttributes;
  bool mGood = false;
};

// A child that a signal ended counts as a shell counts it: 128 and the signal's number.
int waitFor(pid_t aChild) {
  int status = 0;
  pid_t result;
  do {
    result = ::waitpid(aChild, &status, 0);
  } while (result < 0 && errno == EINTR);
  if (result != aChild) {
    return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

int Shell::Run(std::string const& aLine) {
  if (!ShellText::Accept(aLine)) {
    return -1;
  }
  if (aLine == "sync") {
    return syncWritable();
  }
  std::string shell = "/bin/sh";
  std::string option = "-c";
  std::string end = "--";
  std::string line = aLine;
  char* const arguments[] = {shell.data(), option.data(), end.data(), line.data(), nullptr};
  ChildSetup setup;
  pid_t child;
  return setup.spawn(child, arguments) ? waitFor(child) : -1;
}

}  // namespace Zelv::Platform
