#pragma once

#include <cstdint>

#include "zelv/platform/linux/AlarmSchedule.h"

namespace Zelv::Platform {

/// The clock and the thread of the alarms. All but Now() is called under the schedule's lock.
class AlarmDriver {
 public:
  /// Microseconds by a clock that never jumps.
  static std::int64_t NowUs();

  /// Asked for each alarm that is created: makes sure that there is a thread for it.
  static bool Admit(AlarmSchedule::Lock const& aLock);

  /// The deadlines have changed.
  static void Changed(AlarmSchedule::Lock const& aLock);

  /// The last alarm is gone. May release the lock and wait until the thread is gone too.
  static void End(AlarmSchedule::Lock& aLock);
};

}  // namespace Zelv::Platform
