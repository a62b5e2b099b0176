#pragma once

#include <string>

#include "zelv/controller/RemoteDataContext.h"
#include "zelv/infrastructure/URL.h"

namespace Zelv::Controller {

/// What another device asked of this one.
class RemoteDataSubscriptionContext final : public RemoteDataContext {
 public:
  RemoteDataSubscriptionContext(GUID const& aRemoteId, Infrastructure::URL const& aNotifyTo,
                                std::string const& aDeviceId, bool aOneTime,
                                std::string const& aXPath)
      : RemoteDataContext(Kind::Subscription, aXPath, aOneTime),
        remoteId(aRemoteId),
        notifyTo(aNotifyTo),
        deviceId(aDeviceId),
        oneTime(aOneTime) {}

  /// The other device's own id for it, quoted in every answer. Nothing keeps two requests from
  /// using the same.
  GUID const remoteId;
  /// Where the answers go.
  Infrastructure::URL const notifyTo;
  /// As the other device calls itself; may be empty.
  std::string const deviceId;
  /// False for a subscription.
  bool const oneTime;
};

}  // namespace Zelv::Controller
