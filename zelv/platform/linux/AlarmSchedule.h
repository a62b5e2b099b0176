#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

#include "zelv/platform/PCAlarm.h"

namespace Zelv::Platform {

struct AlarmEntry;

/// All alarms of the process by their deadlines: when each goes off next, and who must wait for a
/// callback that runs. Knows no clock and no thread; those are AlarmDriver's.
class AlarmSchedule {
 public:
  using Lock = std::unique_lock<std::mutex>;
  using Queue = std::multimap<std::int64_t, std::shared_ptr<AlarmEntry>>;

  static AlarmSchedule& Get();

  // The operations of PCAlarm.
  bool Add(std::shared_ptr<AlarmEntry> const& aEntry, unsigned int aTimeMs, int aRepeat);
  void Remove(std::shared_ptr<AlarmEntry> const& aEntry);
  void Restart(AlarmEntry& aEntry, unsigned int aTimeMs, int aRepeat);
  void SetCallback(std::shared_ptr<AlarmEntry> const& aEntry, PCAlarm::EventCallback aCallback,
                   void* aUserData);

  /// The lock that the operations below are called under.
  std::mutex& Mutex() { return mMutex; }

  /// When the next alarm is due, in microseconds of AlarmDriver's clock.
  std::optional<std::int64_t> NextDeadline(Lock const& aLock) const;

  /// Lets the first alarm that is due go off; its callback runs on this thread, with the lock
  /// released. @return false when none is due.
  bool RunNext(Lock& aLock, std::int64_t aNowUs);

  /// Alarms created and not destroyed.
  int Created(Lock const&) const { return mCreated; }

  /// Alarms that will go off.
  int Armed(Lock const&) const { return static_cast<int>(mQueue.size()); }

  /// True while a callback runs.
  bool IsRunning(Lock const&) const { return mRunning != nullptr; }

  /// A child of the process has no thread but the calling one: what another one ran is over.
  void ForgetOtherThreads(Lock const&);

 private:
  void arm(AlarmEntry& aEntry, unsigned int aTimeMs, int aRepeat);
  void enqueue(AlarmEntry& aEntry, std::int64_t aDeadlineUs);
  void dequeue(AlarmEntry& aEntry);
  void goOff(Lock& aLock, std::shared_ptr<AlarmEntry> const& aEntry);
  void awaitCallback(Lock& aLock, AlarmEntry const& aEntry);

  std::mutex mMutex;
  std::condition_variable mCallbackEnded;
  // Guarded by mMutex.
  Queue mQueue;
  int mCreated = 0;
  /// Whose callback runs; held, so that no new alarm can take its address meanwhile.
  std::shared_ptr<AlarmEntry> mRunning;
  void const* mRunner = nullptr;
  unsigned long mRuns = 0;
};

/// One alarm; touched by AlarmSchedule alone, under its lock.
struct AlarmEntry {
  bool created = false;
  std::int64_t periodUs = 0;
  /// How often it still goes off; -1 for ever.
  int remaining = 0;
  PCAlarm::EventCallback callback = nullptr;
  void* userData = nullptr;
  /// Where it stands in the queue while it is armed; otherwise its place is kept in spare, so that
  /// arming it again needs no memory.
  AlarmSchedule::Queue::iterator place;
  AlarmSchedule::Queue::node_type spare;
  bool queued = false;
};

}  // namespace Zelv::Platform
