#include "zelv/controller/DataSubscription.h"

namespace Zelv::Controller {

DataSubscription::DataSubscription() : mId(GUID::nullGUID) {}

DataSubscription::DataSubscription(std::string const& aXPath, IBaseDataCallback* aSubscriber,
                                   ContextInformation const* aContext, bool aOneTime)
    : mId(GUID::createGUID()),
      mXPath(aXPath),
      mSubscriber(aSubscriber),
      mContext(aContext),
      mOneTime(aOneTime) {}

std::string DataSubscription::getRemoteDeviceId() const {
  return mXPath.substr(0, mXPath.find("/Zelv"));
}

}  // namespace Zelv::Controller
