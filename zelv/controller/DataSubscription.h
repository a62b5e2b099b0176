#pragma once

#include <string>

#include "zelv/interfaces/ContextInformation.h"
#include "zelv/interfaces/GUID.h"
#include "zelv/interfaces/IBaseDataCallback.h"

namespace Zelv::Controller {

/// Who wants to hear of which path. A value.
class DataSubscription {
 public:
  /// Nobody's, with the null id.
  DataSubscription();

  /// With a new id. Subscriber and context are not owned.
  /// @param aOneTime  true for a request to another device, which changes here do not concern.
  DataSubscription(std::string const& aXPath, IBaseDataCallback* aSubscriber,
                   ContextInformation const* aContext, bool aOneTime);

  GUID const& getId() const { return mId; }
  std::string const& getXPath() const { return mXPath; }
  IBaseDataCallback* getSubscriber() const { return mSubscriber; }
  ContextInformation const* getContext() const { return mContext; }
  bool isOneTimeDelivery() const { return mOneTime; }

  /// The text before the first "/Zelv" of the path, which is empty for the paths in use.
  std::string getRemoteDeviceId() const;

 private:
  GUID mId;
  std::string mXPath;
  IBaseDataCallback* mSubscriber = nullptr;
  ContextInformation const* mContext = nullptr;
  bool mOneTime = false;
};

}  // namespace Zelv::Controller
