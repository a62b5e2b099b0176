#pragma once

namespace Zelv::Platform::Fake {

/// Faults in the start of threads. Threads are real ones.
class FakeThreads {
 public:
  /// The next aCount calls of PCThread::Create() that would start a thread fail, even though a
  /// finished thread may be parked.
  static void FailNext(int aCount);

  /// Takes the fault away.
  static void Reset();
};

}  // namespace Zelv::Platform::Fake
