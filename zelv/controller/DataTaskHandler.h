#pragma once

#include <string>

#include "zelv/interfaces/ContextInformation.h"
#include "zelv/interfaces/GUID.h"
#include "zelv/interfaces/IBaseDataCallback.h"

namespace Zelv::Controller {

/// Does the work of data tasks, for paths of this device or of others. Called on the data worker,
/// one task at a time and with no lock held.
class DataTaskHandler {
 public:
  /// Reads a path and tells aCallback.
  /// @param aOneTime  false for the first delivery of a subscription to another device.
  virtual void executeGetData(GUID const& aTransactionID, std::string const& aXPath,
                              ContextInformation const* aContext, IBaseDataCallback* aCallback,
                              bool aOneTime) = 0;

  /// Sets or, with aAdd, adds a value. aCallback hears of failures only.
  virtual void executeSetData(GUID const& aTransactionID, std::string const& aXPath,
                              std::string const& aValue, bool aAdd, IBaseDataCallback* aCallback,
                              bool aNotifyRemoteSubscribers) = 0;

 protected:
  ~DataTaskHandler() = default;
};

}  // namespace Zelv::Controller
