#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "apps/zelv-tv/EventQueue.h"
#include "apps/zelv-tv/ReturnSender.h"
#include "apps/zelv-tv/SampleCommand.h"
#include "zelv/Zelv.h"

namespace ZelvTv {

/// What other devices may ask of this set while it lives, so that a phone has something to call.
/// MUST end before the library does.
///
/// | Command        | What it does                          | Returns                  |
/// | Echo           | nothing                               | the command's text       |
/// | ShowMessage    | prints "message SENDER TEXT"          | "shown"                  |
/// | Time           | nothing                               | the time of day, in UTC  |
class SampleCommands {
 public:
  /// All arguments outlive the object.
  SampleCommands(EventQueue& aEvents, Zelv::IAppCommand& aCommands)
      : SampleCommands(aEvents, aCommands, ReturnSender::Way()) {}
  SampleCommands(EventQueue& aEvents, Zelv::IAppCommand& aCommands, ReturnSender::Way aWay);
  SampleCommands(SampleCommands const&) = delete;
  SampleCommands& operator=(SampleCommands const&) = delete;
  ~SampleCommands();

  /// As in RFC 3339: "2026-11-21T20:21:05Z".
  static std::string TextOf(std::time_t aTime);

 private:
  void take(char const* aName, SampleCommand& aCommand);

  Zelv::IAppCommand& mCommands;
  ReturnSender mReturns;
  SampleCommand mEcho;
  SampleCommand mShowMessage;
  SampleCommand mTime;
  std::vector<Zelv::GUID> mHandles;
};

}  // namespace ZelvTv
