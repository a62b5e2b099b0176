#pragma once

#include <string>

#include "zelv/controller/DataControllerTask.h"

namespace Zelv::Controller {

/// A write: a set, or an add.
class SetDataTask : public DataControllerTask {
 public:
  /// The callback, which may be null, MUST live until the task has run or is deleted.
  SetDataTask(DataTaskHandler* aHandler, GUID const& aTransactionID, std::string const& aXPath,
              std::string const& aValue, bool aAdd, IBaseDataCallback* aCallback,
              bool aNotifyRemoteSubscribers);

  void execute() override;

 private:
  std::string const mXPath;
  std::string const mValue;
  bool const mAdd;
  IBaseDataCallback* const mCallback;
  bool const mNotifyRemoteSubscribers;
};

}  // namespace Zelv::Controller
