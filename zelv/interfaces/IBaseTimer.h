#pragma once

#include <string>

#include "zelv/interfaces/IBase.h"
#include "zelv/interfaces/IBaseTimerCallback.h"

namespace Zelv {

/// Named timers. All operations may be called from any thread, and from within onTimer().
class ZELV_EXPORT IBaseTimer : public virtual IBase {
 public:
  /// Makes a timer and starts it.
  ///
  /// @param aTimeMs     period in milliseconds; 0 counts as 1.
  /// @param aRepeat     how often it goes off; -1 means for ever, 0 counts as once. A timer that
  ///                    has gone off for the last time stays known until it is destroyed.
  /// @param aTimerName  handed back to onTimer(); need not be unique.
  /// @param aCallback   not owned; MUST live until destroyTimer() has returned.
  /// @return the timer's id.
  virtual GUID createTimer(unsigned int aTimeMs, int aRepeat, std::string const& aTimerName,
                           IBaseTimerCallback* aCallback) = 0;

  /// Stops and deletes a timer. When it returns, onTimer() neither runs nor will run, with one
  /// exception: called from within that timer's own onTimer() it returns at once, and the timer
  /// goes when onTimer() returns.
  ///
  /// On another thread it waits for a running onTimer() of this timer, so the caller MUST NOT hold
  /// a lock that onTimer() takes. From within onData() of a change or of an answer from another
  /// device, which runs under the lock of the tree, it waits for nobody: there onTimer() may be
  /// running yet when it returns, for the last time.
  ///
  /// @param aCallback  for an unknown id, receives onStatus() with an empty text and aTimerID, on
  ///                   the calling thread; may be null. Not used otherwise.
  virtual void destroyTimer(GUID const& aTimerID, IBaseTimerCallback* aCallback) = 0;

  /// Starts the period of a timer anew, with new values as for createTimer(). An unknown id is only
  /// logged.
  virtual void resetTimer(GUID const& aTimerID, unsigned int aTimeMs, int aRepeat) = 0;

  ~IBaseTimer() override;
};

GUID const IID_IBaseTimer("4b36de38-15c1-4979-80f9-ed9b2bc4e9fa");

}  // namespace Zelv
