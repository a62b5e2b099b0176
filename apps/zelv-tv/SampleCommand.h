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
/// return value.
class SampleCommand : public virtual Zelv::IBaseCommandHandler {
 public:
  /// Carries the command out and gives its return value.
  using Work =
      std::function<std::string(std::string const& aCommand, Zelv::CommandArgs const& aArgs)>;
  /// Sends a return value to another device.
  using Sender = std::function<void(std::string const& aValue, Zelv::CommandArgs const& aArgs)>;

  /// @param aEvents  outlives the object.
  SampleCommand(EventQueue& aEvents, Sender aSender, Work aWork);

  std::string onCommand(std::string const& aCommand, Zelv::CommandArgs const& aArgs) override;

 private:
  EventQueue& mEvents;
  Sender const mSender;
  Work const mWork;
};

}  // namespace ZelvTv
