#pragma once

#include <thread>
#include <vector>

#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"

namespace Zelv::Controller {

/// The calls that are being made to objects of others, so that whoever takes an object back can
/// wait until nobody is inside it any more.
///
/// The lock is a leaf and is not held during a call.
class CallsUnderWay {
 public:
  /// One call, which ends with the scope.
  class Call {
   public:
    explicit Call(CallsUnderWay& aCalls) : mCalls(aCalls) {}
    Call(Call const&) = delete;
    Call& operator=(Call const&) = delete;
    ~Call();

    /// To be called under the lock under which the object was found and is taken back.
    void begin(void const* aObject);

   private:
    CallsUnderWay& mCalls;
    void const* mObject = nullptr;
  };

  /// Waits until no other thread is inside aObject. The calling thread's own calls do not count: it
  /// may be told from within to forget the object. Does not wait inside a delivery of the tree,
  /// whose lock that other thread may need to get any further.
  void waitForEnd(void const* aObject);

 private:
  struct Entry {
    void const* mObject;
    std::thread::id mThread;
    bool operator==(Entry const&) const = default;
  };

  bool isBusyElsewhere(void const* aObject) const ZELV_REQUIRES(mLock);
  void end(void const* aObject);

  PCMutex mLock;
  std::vector<Entry> mEntries ZELV_GUARDED_BY(mLock);
  /// One for each thread that waits, on that thread's stack.
  std::vector<PCSemaphore*> mWaiting ZELV_GUARDED_BY(mLock);
};

}  // namespace Zelv::Controller
