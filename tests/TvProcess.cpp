#include "tests/TvProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <utility>

namespace {

/// Long enough for a machine that is busy with everything else, sanitizers included.
constexpr int kPatienceMs = 60000;

bool isReadable(int aDescriptor) {
  pollfd descriptor{aDescriptor, POLLIN, 0};
  int result = -1;
  do {
    result = ::poll(&descriptor, 1, kPatienceMs);
  } while (result < 0 && errno == EINTR);
  return result == 1;
}

}  // namespace

TvProcess::TvProcess(std::vector<std::string> const& aArguments, std::string const& aLogFile,
                     Channel aChannel) {
  // A child that has gone shows as a failed write, not as the end of the tests.
  std::signal(SIGPIPE, SIG_IGN);
  std::array<int, 2> childEnds{-1, -1};
  if (!open(aChannel, childEnds)) {
    ADD_FAILURE() << "no way to talk to zelv-tv";
    return;
  }
  start(aArguments, aLogFile, childEnds);
  ::close(childEnds[0]);
  ::close(childEnds[1]);
}

bool TvProcess::open(Channel aChannel, std::array<int, 2>& aChildEnds) {
  if (aChannel == Channel::Terminal) {
    mInput = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    std::array<char, 128> name{};
    if (::grantpt(mInput) != 0 || ::unlockpt(mInput) != 0 ||
        ::ptsname_r(mInput, name.data(), name.size()) != 0) {
      return false;
    }
    mOutput = ::fcntl(mInput, F_DUPFD_CLOEXEC, 0);
    aChildEnds[0] = ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    aChildEnds[1] = ::fcntl(aChildEnds[0], F_DUPFD_CLOEXEC, 0);
    return aChildEnds[1] >= 0;
  }
  std::array<int, 2> input{};
  std::array<int, 2> output{};
  if (::pipe2(input.data(), O_CLOEXEC) != 0 || ::pipe2(output.data(), O_CLOEXEC) != 0) {
    return false;
  }
  mInput = input[1];
  mOutput = output[0];
  aChildEnds = {input[0], output[1]};
  return true;
}

void TvProcess::start(std::vector<std::string> const& aArguments, std::string const& aLogFile,
                      std::array<int, 2> const& aChildEnds) {
  // It becomes the set, with the same process number; only root may do so without a user namespace.
  std::vector<char*> arguments{const_cast<char*>("unshare"),
                               const_cast<char*>(::geteuid() == 0 ? "-n" : "-Urn"),
                               const_cast<char*>("--"), const_cast<char*>(ZELV_TEST_TV)};
  for (std::string const& argument : aArguments) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, aChildEnds[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, aChildEnds[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, aLogFile.c_str(),
                                   O_WRONLY | O_CREAT | O_APPEND, 0666);
  if (::posix_spawnp(&mProcess, arguments.front(), &actions, nullptr, arguments.data(), environ) !=
      0) {
    ADD_FAILURE() << "cannot start " << ZELV_TEST_TV << " through unshare";
    mProcess = -1;
  }
  posix_spawn_file_actions_destroy(&actions);
}

TvProcess::~TvProcess() {
  EndInput();
  if (mProcess > 0) {
    EXPECT_EQ(ExitStatus(), 0);
  }
  if (mProcess > 0) {
    ::kill(mProcess, SIGKILL);
    ::waitpid(mProcess, nullptr, 0);
  }
  EndOutput();
}

void TvProcess::Write(std::string const& aBytes) {
  for (std::size_t at = 0; at < aBytes.size();) {
    ssize_t const count = ::write(mInput, aBytes.data() + at, aBytes.size() - at);
    ASSERT_GT(count, 0) << "zelv-tv does not listen";
    at += static_cast<std::size_t>(count);
  }
}

void TvProcess::EndInput() {
  if (mInput >= 0) {
    ::close(mInput);
    mInput = -1;
  }
}

void TvProcess::EndOutput() {
  if (mOutput >= 0) {
    ::close(mOutput);
    mOutput = -1;
  }
}

std::string TvProcess::WorkingDirectory() const {
  return std::filesystem::read_symlink("/proc/" + std::to_string(mProcess) + "/cwd").string();
}

bool TvProcess::readMore() {
  if (!isReadable(mOutput)) {
    ADD_FAILURE() << "zelv-tv is silent";
    return false;
  }
  std::array<char, 65536> buffer;
  ssize_t const count = ::read(mOutput, buffer.data(), buffer.size());
  if (count <= 0) {
    return false;
  }
  mBytes.append(buffer.data(), static_cast<std::size_t>(count));
  return true;
}

std::string TvProcess::Line() {
  std::size_t end = mBytes.find('\n');
  while (end == std::string::npos) {
    if (!readMore()) {
      ADD_FAILURE() << "no further line; left: '" << mBytes << "'";
      return "";
    }
    end = mBytes.find('\n');
  }
  std::string line = mBytes.substr(0, end);
  mBytes.erase(0, end + 1);
  return line;
}

void TvProcess::WaitFor(std::string const& aText) {
  std::size_t at = mBytes.find(aText);
  while (at == std::string::npos) {
    if (!readMore()) {
      ADD_FAILURE() << "no '" << aText << "'; left: '" << mBytes << "'";
      return;
    }
    at = mBytes.find(aText);
  }
  mBytes.erase(0, at + aText.size());
}

std::string TvProcess::Rest() {
  while (readMore()) {
  }
  return std::exchange(mBytes, {});
}

void TvProcess::Signal(int aSignal) {
  ASSERT_EQ(::kill(mProcess, aSignal), 0);
}

std::optional<int> TvProcess::ExitStatus() {
  int const process = static_cast<int>(::syscall(SYS_pidfd_open, mProcess, 0));
  bool const ended = isReadable(process);
  ::close(process);
  if (!ended) {
    ADD_FAILURE() << "zelv-tv does not end";
    return std::nullopt;
  }
  int status = 0;
  ::waitpid(mProcess, &status, 0);
  mProcess = -1;
  if (!WIFEXITED(status)) {
    ADD_FAILURE() << "zelv-tv ended by signal " << WTERMSIG(status);
    return std::nullopt;
  }
  return WEXITSTATUS(status);
}
