#include "zelv/controller/GetDataTask.h"

namespace Zelv::Controller {

GetDataTask::GetDataTask(DataTaskHandler* aHandler, GUID const& aTransactionID,
                         std::string const& aXPath, ContextInformation const* aContext,
                         IBaseDataCallback* aCallback, bool aOneTime)
    : DataControllerTask(aHandler, aTransactionID),
      mXPath(aXPath),
      mContext(aContext),
      mCallback(aCallback),
      mOneTime(aOneTime) {}

void GetDataTask::execute() {
  mHandler->executeGetData(mTransactionID, mXPath, mContext, mCallback, mOneTime);
}

}  // namespace Zelv::Controller
