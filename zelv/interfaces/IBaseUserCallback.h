#pragma once

#include <string>

#include "zelv/interfaces/IBaseStatusCallback.h"

namespace Zelv {

/// Receives the input events that were subscribed to.
class ZELV_EXPORT IBaseUserCallback : public virtual IBaseStatusCallback {
 public:
  ~IBaseUserCallback() override;

  /// One input event. Called on the thread of the user controller, one event at a time, in the
  /// order of their arrival. It may call back into the library, but MUST NOT wait for a thread that
  /// ends this very subscription; while it blocks no other event is delivered. What it throws is
  /// logged.
  ///
  /// Whoever can reach this set on the network can send one: no text in it is to be trusted.
  ///
  /// @param aType            the type that was subscribed to.
  /// @param aValue           the event's content; may hold markup.
  /// @param aDevice          the device that sent it, as it names itself.
  /// @param aUser            the user's nickname, as the device gives it.
  /// @param aSubscriptionID  what subscribeUser() returned.
  virtual void onUserInput(std::string const& aType, std::string const& aValue,
                           std::string const& aDevice, std::string const& aUser,
                           GUID const& aSubscriptionID) = 0;
};

GUID const IID_IBaseUserCallback("cedcedf4-c47e-4d63-9ff3-f811515ace03");

}  // namespace Zelv
