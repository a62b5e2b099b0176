#pragma once

namespace Zelv::Platform::Fake {

/// What a test may ask of the alarms behind PCAlarm; FakeClock makes them go off.
class FakeAlarm {
 public:
  /// The next aCount calls of PCAlarm::Create() fail, as when the set has no thread left.
  static void FailNextCreates(int aCount);

  /// How many alarms are created and not yet destroyed.
  static int Created();

  /// How many alarms have a deadline; counted alarms that went off for the last time have none.
  static int Armed();

  /// Takes the fault away. Alarms stay.
  static void Reset();
};

}  // namespace Zelv::Platform::Fake
