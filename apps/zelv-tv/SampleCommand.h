#pragma once

#include <functional>
#include <string>

#include "apps/zelv-tv/EventQueue.h"
#include "zelv/Zelv.h"

namespace ZelvTv {

/// A command that this set carries out for whoever asks. Each comes as a line, "command SENDER
/// MESSAGEID TEXT".
///
/// What came from another device is answered by a message; what came from this program, by the
/// return value. MUST live until the library has stopped.
class SampleCommand : public virtual Zelv::IBaseCommandHandler {
 public:
  /// Carries the command out and gives its return value.
  using Work =
      std::function<std::string(std::string const& aCommand, Zelv::CommandArgs const& aArgs)>;
  /// Sends a return value to another device.
  using Sender = std::function<void(std::string const& aValue, Zelv::CommandArgs const& aArgs)>;

  /// @param aEvents  outlives the object.
  SampleCommand(EventQueue& aEvents, Work aWork, Sender aSender = &Zelv::CommandReturn::sendReturn);

  std::string onCommand(std::string const& aCommand, Zelv::CommandArgs const& aArgs) override;

 private:
  EventQueue& mEvents;
  Work const mWork;
  Sender const mSender;
};

}  // namespace ZelvTv
