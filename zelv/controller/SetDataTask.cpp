#include "zelv/controller/SetDataTask.h"

namespace Zelv::Controller {

SetDataTask::SetDataTask(DataTaskHandler* aHandler, GUID const& aTransactionID,
                         std::string const& aXPath, std::string const& aValue, bool aAdd,
                         IBaseDataCallback* aCallback, bool aNotifyRemoteSubscribers)
    : DataControllerTask(aHandler, aTransactionID),
      mXPath(aXPath),
      mValue(aValue),
      mAdd(aAdd),
      mCallback(aCallback),
      mNotifyRemoteSubscribers(aNotifyRemoteSubscribers) {}

void SetDataTask::execute() {
  mHandler->executeSetData(mTransactionID, mXPath, mValue, mAdd, mCallback,
                           mNotifyRemoteSubscribers);
}

}  // namespace Zelv::Controller
