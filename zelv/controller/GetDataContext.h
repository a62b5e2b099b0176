#pragma once

#include <string>

#include "zelv/controller/RemoteDataContext.h"

namespace Zelv::Controller {

/// One request of this device on its way to another, while the other's address is looked up.
class GetDataContext final : public RemoteDataContext {
 public:
  GetDataContext(GUID const& aTransactionId, std::string const& aXPath, bool aOneTime,
                 std::string const& aDeviceId, std::string const& aLookup)
      : RemoteDataContext(Kind::Request, aLookup, true),
        transactionId(aTransactionId),
        xpath(aXPath),
        oneTime(aOneTime),
        deviceId(aDeviceId) {}

  /// Of the transaction or subscription; the other device quotes it in its answers.
  GUID const transactionId;
  /// As the caller gave it.
  std::string const xpath;
  /// False for a subscription.
  bool const oneTime;
  /// The other device.
  std::string const deviceId;
};

}  // namespace Zelv::Controller
