#pragma once

#include "zelv/controller/DataTaskHandler.h"

namespace Zelv::Controller {

/// Stands in where there is no way to other devices: logs, and reports nothing, as a device does
/// that never answers.
class UnreachableDataHandler final : public virtual DataTaskHandler {
 public:
  void executeGetData(GUID const& aTransactionID, std::string const& aXPath,
                      ContextInformation const* aContext, IBaseDataCallback* aCallback,
                      bool aOneTime) override;

  /// Never called: writes to other devices are refused before they become a task.
  void executeSetData(GUID const& aTransactionID, std::string const& aXPath,
                      std::string const& aValue, bool aAdd, IBaseDataCallback* aCallback,
                      bool aNotifyRemoteSubscribers) override;
};

}  // namespace Zelv::Controller
