#include "zelv/platform/linux/ThreadStart.h"

#include "zelv/platform/linux/SystemThread.h"

namespace Zelv::Platform {

bool ThreadStart::Start(std::size_t aStack, Main aMain, void* aArgument) {
  return SystemThread::Start(aStack, aMain, aArgument);
}

bool ThreadStart::MayReuse() {
  return true;
}

}  // namespace Zelv::Platform
