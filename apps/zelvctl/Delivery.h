#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "apps/zelvctl/Bell.h"
#include "zelv/adapter/SendCancel.h"
#include "zelv/infrastructure/URL.h"

namespace ZelvCtl {

/// One message on its way over TCP, on a thread of its own: the transport waits for seconds, and
/// whoever sends may have less patience than that.
class Delivery {
 public:
  /// @param aBell  rung at the end; outlives the object.
  Delivery(Zelv::Infrastructure::URL const& aAddress, std::string aText, Bell& aBell);
  Delivery(Delivery const&) = delete;
  Delivery& operator=(Delivery const&) = delete;

  /// Gives up, if it has not ended.
  ~Delivery();

  bool isOver() const { return mState != UnderWay; }
  bool wasAcknowledged() const { return mState == Acknowledged; }

  /// Sends on the calling thread. @return whether the other side has taken it.
  static bool send(Zelv::Infrastructure::URL const& aAddress, std::string const& aText,
                   Zelv::Adapter::SendCancel& aCancel);

 private:
  enum State { UnderWay, Acknowledged, Failed };

  Zelv::Adapter::SendCancel mCancel;
  std::atomic<State> mState = UnderWay;
  std::thread mThread;
};

}  // namespace ZelvCtl
