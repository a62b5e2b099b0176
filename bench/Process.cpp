#include "bench/Process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace Zelv::Bench {

Process::Process(TwoHosts const& aHosts, std::vector<std::string> aArguments, End aEnd)
    : mEnd(aEnd) {
  aHosts.there([&] { start(aArguments); });
  if (mProcess <= 0) {
    throw std::runtime_error(aArguments[0] + " does not start");
  }
}

void Process::start(std::vector<std::string>& aArguments) {
  int input[2];
  int output[2];
  if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) {
    return;
  }
  std::vector<char*> arguments;
  for (std::string& argument : aArguments) {
    arguments.push_back(argument.data());
  }
  arguments.push_back(nullptr);
  mProcess = fork();
  if (mProcess == 0) {
    // Nothing but system calls: other threads may have held any lock.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(input[0], STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    execvp(arguments[0], arguments.data());
    _exit(127);
  }
  close(input[0]);
  close(output[1]);
  mInput = input[1];
  mOutput = output[0];
}

Process::~Process() {
  close(mInput);
  close(mOutput);
  if (mEnd == End::bySignal) {
    kill(mProcess, SIGTERM);
  }
  auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (waitpid(mProcess, nullptr, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > end) {
      kill(mProcess, SIGKILL);
      waitpid(mProcess, nullptr, 0);
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

std::string Process::line() {
  std::string text;
  char letter = 0;
  while (read(mOutput, &letter, 1) == 1) {
    if (letter == '\n') {
      return text;
    }
    text += letter;
  }
  throw std::runtime_error("a program at the other host has ended");
}

void Process::say(std::string const& aLine) {
  std::string const text = aLine + "\n";
  if (write(mInput, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("a program at the other host does not listen");
  }
}

}  // namespace Zelv::Bench
