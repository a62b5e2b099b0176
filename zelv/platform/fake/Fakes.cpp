#include "zelv/platform/fake/Fakes.h"

#include "zelv/platform/fake/FakeAlarm.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeEntropy.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeInterfaces.h"
#include "zelv/platform/fake/FakeMath.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/FakeSockets.h"
#include "zelv/platform/fake/FakeThreads.h"

namespace Zelv::Platform::Fake {

void ResetFakes() {
  FakeAlarm::Reset();
  FakeClock::Reset();
  FakeEntropy::Reset();
  FakeFiles::Reset();
  FakeInterfaces::Reset();
  FakeMath::Reset();
  FakeShell::Reset();
  FakeSockets::Reset();
  FakeThreads::Reset();
}

}  // namespace Zelv::Platform::Fake
