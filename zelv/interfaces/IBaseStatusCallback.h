#pragma once

#include "zelv/interfaces/IBase.h"
#include "zelv/interfaces/StatusInformation.h"

namespace Zelv {

/// The root of all callbacks: hears of failures.
///
/// Callbacks are never owned by the library. One that was handed in MUST live until nothing can
/// come back to it any more: for a subscription until it was unsubscribed and the data worker is
/// past it, for a timer until destroyTimer() has returned.
class ZELV_EXPORT IBaseStatusCallback : public virtual IBase {
 public:
  /// A transaction failed after the call that began it had returned.
  ///
  /// Called on a thread of the library, mostly the data worker, or within destroyTimer() on the
  /// caller's own. A read under no provider is reported twice. The success of a set or add is not
  /// reported at all.
  ///
  /// @param aStatus         its text is empty for every failure that began as an exception.
  /// @param aTransactionID  what the call returned.
  virtual void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) = 0;

  ~IBaseStatusCallback() override;
};

GUID const IID_IBaseStatusCallback("ace0d0b6-f070-41df-aa77-d3c1e0016afd");

}  // namespace Zelv
