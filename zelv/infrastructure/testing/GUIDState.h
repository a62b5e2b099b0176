#pragma once

#include "zelv/infrastructure/GUID.h"

namespace Zelv::Infrastructure {

/// What GUID keeps for the whole process, for tests of its first use.
class GUIDState {
 public:
  /// As at load.
  static void Forget() {
    GUID::mSeeded = false;
    GUID::mDevRandom = false;
  }

  static bool Seeded() { return GUID::mSeeded; }
};

}  // namespace Zelv::Infrastructure
