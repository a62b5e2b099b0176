#pragma once

#include <string>

#include "zelv/interfaces/IBaseStatusCallback.h"

namespace Zelv {

/// Is called when a timer goes off.
class ZELV_EXPORT IBaseTimerCallback : public virtual IBaseStatusCallback {
 public:
  ~IBaseTimerCallback() override;

  /// The timer went off. Called on the platform's alarm thread, one timer at a time, so a callback
  /// that blocks delays all timers. It may create, reset and destroy timers, its own included.
  ///
  /// A std::exception that leaves it comes back through onStatus() with an empty text and the
  /// timer's id; the timer goes on.
  virtual void onTimer(std::string const& aTimerName, GUID aTimerID) = 0;
};

GUID const IID_IBaseTimerCallback("06125ebd-d897-471a-be02-2cedf04c0f33");

}  // namespace Zelv
