#pragma once

#include <string>

#include "apps/zelv-tv/EventQueue.h"
#include "zelv/Zelv.h"

namespace ZelvTv {

/// Tells of the input from other devices: "input TYPE DEVICE USER VALUE". MUST live until the
/// library has stopped.
class InputListener : public virtual Zelv::IBaseUserCallback {
 public:
  /// @param aEvents  outlives the object.
  explicit InputListener(EventQueue& aEvents) : mEvents(aEvents) {}

  /// Subscribes to keys, to text, and to what has no type, which is also what could not be read.
  void Begin(Zelv::IAppUser& aInput);

  void onUserInput(std::string const& aType, std::string const& aValue, std::string const& aDevice,
                   std::string const& aUser, Zelv::GUID const& aSubscriptionID) override;
  void onStatus(Zelv::StatusInformation const& /*aStatus*/,
                Zelv::GUID const& /*aTransactionID*/) override {}

 private:
  EventQueue& mEvents;
};

}  // namespace ZelvTv
