#pragma once

#include <mutex>
#include <string>

#include "apps/zelvctl/KnownDevices.h"

namespace ZelvCtl {

/// Keeps an eye on one device: whether it has gone, and how often it came back. From any thread.
class Presence {
 public:
  /// From now on. @param aId  empty for one that is known by its address alone.
  void follow(std::string const& aId, std::string const& aAddress);

  /// Some device has arrived (true) or left (false).
  void note(bool aArrived, Device const& aDevice);

  /// True from its departure to its return.
  bool isAway() const;

  unsigned returns() const;

 private:
  bool isMeant(Device const& aDevice) const;

  mutable std::mutex mLock;
  std::string mId;
  std::string mAddress;
  bool mIsAway = false;
  unsigned mReturns = 0;
};

}  // namespace ZelvCtl
