#pragma once

#include <string>

#include "zelv/interfaces/GUID.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv::Controller {

/// Writes the messages of remote data. They are put together as text: only paths are escaped, and
/// peers read the very form that stands here.
///
/// May be used by any thread. Before a setting is known its elements are empty.
class RemoteDataMessages {
 public:
  void setLocalDeviceId(std::string const& aDeviceId);

  /// Where peers reach this device, which is also where their answers go.
  void setServiceUrl(std::string const& aUrl);

  /// Paths are in local form; they are escaped here.
  std::string requestData(GUID const& aTransactionId, std::string const& aLocalXPath) const;
  std::string subscribeData(GUID const& aSubscriptionId, std::string const& aLocalXPath) const;
  std::string unsubscribeData(GUID const& aSubscriptionId) const;
  /// The value is put in as it stands: it can be XML, and arrives as such.
  std::string onData(GUID const& aSubscriptionId, std::string const& aValue) const;

 private:
  std::string envelope(bool aToBeNotified, std::string const& aBody) const;

  mutable PCMutex mLock;
  std::string mLocalDeviceId ZELV_GUARDED_BY(mLock);
  std::string mServiceUrl ZELV_GUARDED_BY(mLock);
};

}  // namespace Zelv::Controller
