#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "apps/zelvctl/KnownDevices.h"
#include "apps/zelvctl/Membership.h"
#include "apps/zelvctl/PhoneMessages.h"
#include "apps/zelvctl/Questions.h"
#include "apps/zelvctl/SeenIds.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/interfaces/NetworkMessageCallback.h"

namespace ZelvCtl {

/// A phone in the home: takes part in discovery as a mobile device from construction to
/// destruction.
class Phone final : public Zelv::NetworkMessageCallback {
 public:
  /// Told of arrivals (true) and departures (false), on the network's thread or that of tick(), not
  /// under a lock.
  using Watcher = std::function<void(bool aArrived, Device const& aDevice)>;

  /// A device that is silent for this many heartbeat intervals has gone without a word.
  static constexpr double Patience = 1.2;

  using Clock = KnownDevices::Clock;
  using TimeSource = std::function<Clock::time_point()>;

  /// Joins the group, asks who is there and announces itself. Throws std::runtime_error when that
  /// cannot be done.
  Phone(Identity const& aIdentity, std::string const& aGroup, Watcher aWatcher,
        TimeSource aNow = Clock::now);
  Phone(Phone const&) = delete;
  Phone& operator=(Phone const&) = delete;

  /// Says goodbye.
  ~Phone();

  void onMessage(std::string const& aMessage, std::string const& aSender) override;

  /// Sends a heartbeat and drops the devices that were silent for aPatience.
  void tick(Clock::duration aPatience);

  std::vector<Device> devices() const;

 private:
  using Message = Zelv::Infrastructure::HierarchicalDB;

  void handle(Message& aMessage);
  void onDescription(Message& aMessage);
  void onBye(std::string const& aDeviceId);
  void onHeartBeat(std::string const& aDeviceId);
  void onQuestion(Message& aMessage, std::string const& aType);
  bool isCopy(std::string const& aMessageId);
  bool noteDevice(Device const& aDevice);
  bool mustAskFor(std::string const& aDeviceId);

  Identity const mIdentity;
  PhoneMessages const mMessages;
  Watcher const mWatcher;
  TimeSource const mNow;

  mutable std::mutex mLock;
  KnownDevices mDevices;
  Questions mQuestions;
  SeenIds mSeen;

  /// The last, so that nothing comes any more when the others go.
  Membership mHome;
};

}  // namespace ZelvCtl
