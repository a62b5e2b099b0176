#pragma once

#include <string>

#include "apps/StopSignal.h"
#include "apps/zelv-tv/EventQueue.h"
#include "apps/zelv-tv/LineReader.h"
#include "apps/zelv-tv/LineWriter.h"
#include "apps/zelv-tv/Readiness.h"
#include "apps/zelv-tv/Session.h"
#include "apps/zelv-tv/Settling.h"

namespace ZelvTv {

/// The program's one conversation: commands in, lines out, all on the calling thread.
class Console {
 public:
  /// All arguments outlive the object.
  Console(EventQueue& aEvents, ZelvApps::StopSignal const& aStop, Session& aSession,
          Readiness& aReadiness, Settling& aSettling);

  /// Runs until "quit", the end of standard input or a signal.
  /// @return the program's exit status.
  int Run();

 private:
  /// How the conversation goes on.
  enum class State { Talking, Settling, Stopped, Broken };

  void waitForSomething(int aTimeoutMs, bool& aInput);
  void serve(bool aInput);
  void settle();
  void executeLines();
  void printEvents();
  void print(std::string const& aLine);
  void prompt();

  EventQueue& mEvents;
  ZelvApps::StopSignal const& mStop;
  Session& mSession;
  Readiness& mReadiness;
  Settling& mSettling;
  LineReader mReader;
  LineWriter mWriter;
  /// Somebody sits at a terminal and sees a prompt.
  bool const mInteractive;
  bool mPrompted = false;
  State mState = State::Talking;
};

}  // namespace ZelvTv
