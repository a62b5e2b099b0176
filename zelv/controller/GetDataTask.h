#pragma once

#include <string>

#include "zelv/controller/DataControllerTask.h"

namespace Zelv::Controller {

/// A read.
class GetDataTask : public DataControllerTask {
 public:
  /// Context and callback MUST live until the task has run or is deleted.
  GetDataTask(DataTaskHandler* aHandler, GUID const& aTransactionID, std::string const& aXPath,
              ContextInformation const* aContext, IBaseDataCallback* aCallback, bool aOneTime);

  void execute() override;

 private:
  std::string const mXPath;
  ContextInformation const* const mContext;
  IBaseDataCallback* const mCallback;
  bool const mOneTime;
};

}  // namespace Zelv::Controller
