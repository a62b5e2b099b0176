#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "apps/zelvctl/KnownDevices.h"
#include "apps/zelvctl/PhoneMessages.h"
#include "zelv/infrastructure/GUID.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/interfaces/NetworkMessageCallback.h"

namespace ZelvCtl {

/// A phone in the home: takes part in discovery as a mobile device from construction to
/// destruction.
class Phone : public Zelv::NetworkMessageCallback {
 public:
  /// Told of arrivals (true) and departures (false), on the network's thread or that of tick().
  using Watcher = std::function<void(bool aArrived, Device const& aDevice)>;

  /// Joins the group, asks who is there and announces itself. Throws std::runtime_error when the
  /// group cannot be joined.
  Phone(Identity const& aIdentity, std::string const& aGroup, Watcher aWatcher);
  Phone(Phone const&) = delete;
  Phone& operator=(Phone const&) = delete;

  /// Says goodbye.
  ~Phone();

  void onMessage(std::string const& aMessage, std::string const& aSender) override;

  /// Sends a heartbeat and drops the devices that were silent for aPatience.
  void tick(KnownDevices::Clock::duration aPatience);

  std::vector<Device> devices() const;

 private:
  using Message = Zelv::Infrastructure::HierarchicalDB;

  void handle(Message& aMessage);
  void onDescription(Message& aMessage);
  void onBye(std::string const& aDeviceId);
  void onHeartBeat(std::string const& aDeviceId);
  void onQuestion(Message& aMessage, std::string const& aType);
  bool isRepeated(std::string const& aMessageId);
  void multicast(std::string const& aText);

  Identity const mIdentity;
  PhoneMessages const mMessages;
  Zelv::Infrastructure::URL const mGroup;
  Watcher const mWatcher;
  Zelv::Infrastructure::GUID mService;

  mutable std::mutex mLock;
  KnownDevices mDevices;
  std::vector<std::string> mSeen;
};

}  // namespace ZelvCtl
