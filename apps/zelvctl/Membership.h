#pragma once

#include <string>

#include "zelv/infrastructure/GUID.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/interfaces/NetworkMessageCallback.h"

namespace ZelvCtl {

/// Hears and speaks to the group of the home, from construction to destruction. One at a time in a
/// process.
class Membership {
 public:
  /// @param aLocalAddress  of the interface that the group is reached through.
  /// @param aListener      called on a thread of the network until the destructor has returned.
  ///
  /// Throws std::runtime_error when the group cannot be joined.
  Membership(Zelv::Infrastructure::URL const& aGroup, std::string const& aLocalAddress,
             Zelv::NetworkMessageCallback* aListener);
  Membership(Membership const&) = delete;
  Membership& operator=(Membership const&) = delete;
  ~Membership();

  /// Sends to the group. @return false when it did not go out.
  bool tellAll(std::string const& aText);

  /// Sends to one address; only over UDP, since nothing else is sure not to wait for the peer.
  bool tell(Zelv::Infrastructure::URL const& aAddress, std::string const& aText);

 private:
  Zelv::Infrastructure::URL const mGroup;
  std::string const mLocalAddress;
};

}  // namespace ZelvCtl
