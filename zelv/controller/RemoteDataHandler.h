#pragma once

#include <list>
#include <string>

#include "zelv/controller/DataTaskHandler.h"
#include "zelv/interfaces/ICoreDataCallback.h"

namespace Zelv::Controller {

/// The way to the trees of other devices: does the data tasks whose path names another device, and
/// serves what those devices ask of this one.
///
/// Owned by the data controller. As a callback it is the one that a change is withheld from when it
/// must not leave this device. Answers to executeGetData() come back through
/// ICoreData::notifyDataSubscriber(), with the transaction id.
class RemoteDataHandler : public virtual DataTaskHandler, public virtual ICoreDataCallback {
 public:
  RemoteDataHandler() = default;
  RemoteDataHandler(RemoteDataHandler const&) = delete;
  RemoteDataHandler& operator=(RemoteDataHandler const&) = delete;

  /// Called before the data worker starts.
  virtual void initialize() = 0;

  /// Ends whatever executeGetData() may wait for, and takes the service down. The data worker may
  /// still be running a task.
  virtual void terminate() = 0;

  // The three below may come from any thread and under the lock of the subscriptions, so they must
  // not wait for a thread that uses the tree.

  /// No device is left: drops all queues and subscriptions of devices.
  virtual void removeAllRemoteDeviceService() = 0;

  /// Drops the queues of devices that are not in the list of identifiers.
  virtual void terminateInactiveDeviceQueue(std::list<std::string> const& aOnlineDevices) = 0;

  /// Drops the subscriptions of devices that are not in the list of identifiers.
  virtual void removeInactiveDeviceSubscription(std::list<std::string> const& aOnlineDevices) = 0;
};

}  // namespace Zelv::Controller
