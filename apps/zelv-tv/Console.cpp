#include "apps/zelv-tv/Console.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <chrono>

namespace ZelvTv {

namespace {

/// How long answers are waited for after the end of the input.
constexpr std::chrono::milliseconds kSettlingTime{5000};

char const* const kPrompt = "zelv> ";
/// Back to the beginning of the terminal's line, and clears it.
char const* const kEraseLine = "\r\x1b[K";

}  // namespace

Console::Console(EventQueue& aEvents, ZelvApps::StopSignal const& aStop, Session& aSession,
                 Readiness& aReadiness, Settling& aSettling)
    : mEvents(aEvents),
      mStop(aStop),
      mSession(aSession),
      mReadiness(aReadiness),
      mSettling(aSettling),
      mReader(STDIN_FILENO),
      mWriter(STDOUT_FILENO, aStop.Descriptor()),
      mInteractive(::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1) {}

int Console::Run() {
  while (mState == State::Talking) {
    bool input = false;
    waitForSomething(-1, input);
    serve(input);
  }
  settle();
  if (mPrompted) {
    mWriter.TextIfRoom("\n");
  }
  return mState == State::Broken ? 1 : 0;
}

void Console::waitForSomething(int aTimeoutMs, bool& aInput) {
  // Commands wait until the tree answers, so that "ready" is the first line.
  bool const listening = mState == State::Talking && mReadiness.IsReady();
  std::array<pollfd, 3> descriptors{{{mStop.Descriptor(), POLLIN, 0},
                                     {mEvents.Descriptor(), POLLIN, 0},
                                     {listening ? STDIN_FILENO : -1, POLLIN, 0}}};
  if (::poll(descriptors.data(), descriptors.size(), aTimeoutMs) <= 0) {
    return;
  }
  if (descriptors[0].revents != 0) {
    mState = State::Stopped;
  }
  aInput = descriptors[2].revents != 0;
}

void Console::serve(bool aInput) {
  if (mState != State::Stopped) {
    printEvents();
  }
  if (aInput && mState == State::Talking) {
    mReader.Read();
    executeLines();
  }
  if (mState == State::Talking && mReadiness.IsReady()) {
    prompt();
  }
}

void Console::settle() {
  if (mState != State::Settling) {
    return;
  }
  mSettling.Begin();
  auto const end = std::chrono::steady_clock::now() + kSettlingTime;
  bool settled = false;
  while (mState == State::Settling && !settled && std::chrono::steady_clock::now() < end) {
    auto const left =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    bool input = false;
    waitForSomething(static_cast<int>(left.count()), input);
    // Asked before the events are taken, so that what came before the settling is among them.
    settled = mSettling.IsSettled();
    serve(input);
  }
}

void Console::executeLines() {
  std::string line;
  while (mState == State::Talking) {
    LineReader::Result const result = mReader.Next(line);
    if (result == LineReader::Result::None) {
      mState = mReader.HasEnded() ? State::Settling : State::Talking;
      return;
    }
    mPrompted = false;
    if (result == LineReader::Result::TooLong) {
      print("error a line may hold " + std::to_string(LineReader::kMaximumLine) + " bytes");
      continue;
    }
    for (std::string const& reply : mSession.Execute(line)) {
      print(reply);
    }
    if (mSession.HasEnded() && mState == State::Talking) {
      mState = State::Settling;
    }
  }
}

void Console::printEvents() {
  for (std::string const& line : mEvents.Take()) {
    print(line);
  }
}

void Console::print(std::string const& aLine) {
  if (mState == State::Stopped || mState == State::Broken) {
    return;
  }
  if (mPrompted) {
    mWriter.Text(kEraseLine);
    mPrompted = false;
  }
  if (!mWriter.Line(aLine)) {
    // Either nobody reads any more, or there is a signal, which is the next thing looked at.
    mState = State::Broken;
    bool input = false;
    waitForSomething(0, input);
  }
}

void Console::prompt() {
  if (mInteractive && !mPrompted) {
    mPrompted = mWriter.Text(kPrompt);
  }
}

}  // namespace ZelvTv
