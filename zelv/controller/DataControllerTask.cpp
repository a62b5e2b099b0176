#include "zelv/controller/DataControllerTask.h"

namespace Zelv::Controller {

DataControllerTask::DataControllerTask(DataTaskHandler* aHandler, GUID const& aTransactionID)
    : mHandler(aHandler), mTransactionID(aTransactionID) {}

DataControllerTask::~DataControllerTask() = default;

}  // namespace Zelv::Controller
