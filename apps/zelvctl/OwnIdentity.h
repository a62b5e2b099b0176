#pragma once

#include "apps/zelvctl/Options.h"
#include "apps/zelvctl/PhoneMessages.h"

namespace ZelvCtl {

/// Settles who this phone is.
class OwnIdentity {
 public:
  /// By what was asked for. The address, unless that was given, is the one that a device given by
  /// its address sees, or else that of the last interface. Throws std::runtime_error when there is
  /// none.
  static Identity of(Options const& aOptions);
};

}  // namespace ZelvCtl
