#pragma once

#include "zelv/controller/DataTaskHandler.h"

namespace Zelv::Controller {

/// One request on its way to the data worker.
class DataControllerTask {
 public:
  DataControllerTask(DataTaskHandler* aHandler, GUID const& aTransactionID);
  DataControllerTask(DataControllerTask const&) = delete;
  DataControllerTask& operator=(DataControllerTask const&) = delete;
  virtual ~DataControllerTask();

  /// Hands the request to the handler.
  virtual void execute() = 0;

 protected:
  DataTaskHandler* const mHandler;
  GUID const mTransactionID;
};

}  // namespace Zelv::Controller
