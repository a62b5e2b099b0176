#pragma once

#include <string>

#include "zelv/interfaces/ContextInformation.h"
#include "zelv/interfaces/IBase.h"
#include "zelv/interfaces/IBaseDataCallback.h"

namespace Zelv {

/// Reads, writes and subscriptions on the tree of all data.
///
/// The tree is XML with the root element Zelv, addressed by XPath. A path that begins with "/Zelv/"
/// or "/Zelv[@DeviceId='ID']/", with this device's own ID, is local; every other path is remote.
///
/// All operations may be called from any thread. They only check, queue and return; the work is
/// done on the data worker, one task at a time in the order of the calls, and before the start of
/// that worker not at all. What is known while the call runs is thrown; what is found out later
/// reaches onStatus() of the callback.
class ZELV_EXPORT IBaseData : public virtual IBase {
 public:
  /// Replaces the value of a local path.
  ///
  /// @param aXPath                     a local path.
  /// @param aValue                     the new value.
  /// @param aCallback                  hears of a failure; success is not reported. Not owned. Null
  ///                                   is accepted, and failures are then told to nobody.
  /// @param aNotifyRemoteSubscribers  false keeps the change from subscribers on other devices;
  ///                                  local ones are told in either case.
  /// @return the transaction's id.
  /// @throws std::runtime_error "Cannot set data on remote XPath." when the path is not local.
  virtual GUID setData(std::string const& aXPath, std::string const& aValue,
                       IBaseDataCallback* aCallback, bool aNotifyRemoteSubscribers) = 0;

  /// Adds a value under a local path; otherwise as setData().
  ///
  /// @throws std::runtime_error "Cannot add data to remote XPath." when the path is not local.
  virtual GUID addData(std::string const& aXPath, std::string const& aValue,
                       IBaseDataCallback* aCallback, bool aNotifyRemoteSubscribers) = 0;

  /// Reads once.
  ///
  /// @param aXPath     a local or remote path.
  /// @param aContext   handed back with the answer; not owned, may be null.
  /// @param aCallback  receives the answer through onData(), or onStatus() on failure; not owned,
  ///                   not null.
  /// @return the transaction's id. For a remote path it stays a subscription's id until
  ///         unsubscribeData() is called with it.
  /// @throws std::runtime_error "Invalid XPath." when the path holds a line feed.
  virtual GUID requestData(std::string const& aXPath, ContextInformation const* aContext,
                           IBaseDataCallback* aCallback) = 0;

  /// Subscribes to a path. The current value is delivered first, on the data worker; changes at the
  /// path, below it and above it follow. Arguments and errors as for requestData().
  ///
  /// @return the subscription's id, which every delivery carries.
  virtual GUID subscribeData(std::string const& aXPath, ContextInformation const* aContext,
                             IBaseDataCallback* aCallback) = 0;

  /// Ends a subscription. An unknown id does nothing. May be called from within onData(), that of
  /// the subscription itself included.
  virtual void unsubscribeData(GUID aSubscriptionID) = 0;

  ~IBaseData() override;
};

GUID const IID_IBaseData("ef9fb54f-92e4-4827-b1af-f61925e2fd79");

}  // namespace Zelv
