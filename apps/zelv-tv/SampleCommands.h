#pragma once

#include <ctime>
#include <functional>

#include "apps/zelv-tv/EventQueue.h"
#include "apps/zelv-tv/SampleCommand.h"
#include "zelv/Zelv.h"

namespace ZelvTv {

/// What other devices may ask of this set, so that a phone has something to call. MUST live until
/// the library has stopped.
///
/// | Command        | What it does                          | Returns                  |
/// | Echo           | nothing                               | the command's text       |
/// | ShowMessage    | prints "message SENDER TEXT"          | "shown"                  |
/// | Time           | nothing                               | the time of day, in UTC  |
class SampleCommands {
 public:
  /// @param aEvents  outlives the object.
  explicit SampleCommands(EventQueue& aEvents,
                          SampleCommand::Sender const& aSender = &Zelv::CommandReturn::sendReturn);

  void Register(Zelv::IAppCommand& aCommands);

  /// As in RFC 3339: "2026-11-21T20:21:05Z".
  static std::string TextOf(std::time_t aTime);

 private:
  SampleCommand mEcho;
  SampleCommand mShowMessage;
  SampleCommand mTime;
};

}  // namespace ZelvTv
