#include "zelv/platform/linux/ThreadStart.h"

#include <atomic>

#include "zelv/platform/fake/FakeThreads.h"
#include "zelv/platform/linux/SystemThread.h"

namespace Zelv::Platform {
namespace {
std::atomic<int> theFailing{0};
}  // namespace

bool ThreadStart::Start(std::size_t aStack, Main aMain, void* aArgument) {
  int failing = theFailing;
  while (failing > 0) {
    if (theFailing.compare_exchange_weak(failing, failing - 1)) {
      return false;
    }
  }
  return SystemThread::Start(aStack, aMain, aArgument);
}

bool ThreadStart::MayReuse() {
  return theFailing == 0;
}

namespace Fake {

void FakeThreads::FailNext(int aCount) {
  theFailing = aCount;
}

void FakeThreads::Reset() {
  theFailing = 0;
}

}  // namespace Fake
}  // namespace Zelv::Platform
