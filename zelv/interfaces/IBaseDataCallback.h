#pragma once

#include <string>

#include "zelv/interfaces/ContextInformation.h"
#include "zelv/interfaces/IBaseStatusCallback.h"

namespace Zelv {

/// Receives the values that were read, and the changes that were subscribed to.
class ZELV_EXPORT IBaseDataCallback : public virtual IBaseStatusCallback {
 public:
  ~IBaseDataCallback() override;

  /// One value.
  ///
  /// Answers and first deliveries come on the data worker, so a callback that blocks delays all
  /// data traffic. A change of exactly the subscribed path comes on the thread that reported it,
  /// under the lock of the subscriptions: it may call back into the library, but MUST NOT wait
  /// for another thread that does.
  ///
  /// @param aXPath          the path as the caller wrote it.
  /// @param aValue          the value; several nodes are joined by the six characters "&#x13;".
  /// @param aContext        what was handed in with the request, unchanged.
  /// @param aTransactionID  what requestData() or subscribeData() returned.
  virtual void onData(std::string const& aXPath, std::string const& aValue,
                      ContextInformation const* aContext, GUID const& aTransactionID) = 0;
};

GUID const IID_IBaseDataCallback("939e248e-2303-43a0-a7fd-5902cbab44d3");

}  // namespace Zelv
