#pragma once

#include <string>

namespace ZelvCtl {

/// Finds out where this phone stands.
class OwnAddress {
 public:
  /// The address that sets of this machine would take: the last one of the last interface but "lo".
  /// Throws std::runtime_error when there is none.
  static std::string find();

  /// The one that a peer sees when this phone speaks to it. Throws std::runtime_error when there is
  /// no way to the peer.
  static std::string towards(std::string const& aPeer);
};

}  // namespace ZelvCtl
