#include "zelv/platform/PCSemaphore.h"

#include <cerrno>

PCSemaphore::~PCSemaphore() {
  Destroy();
}

int PCSemaphore::Create(int aInitial) {
  if (mCreated || aInitial < 0) {
    return 0;
  }
  mCreated = ::sem_init(&mSemaphore, 0, static_cast<unsigned>(aInitial)) == 0;
  return mCreated ? 1 : 0;
}

void PCSemaphore::Take() {
  while (::sem_wait(&mSemaphore) != 0 && errno == EINTR) {
  }
}

void PCSemaphore::Give() {
  ::sem_post(&mSemaphore);
}

void PCSemaphore::Destroy() {
  if (mCreated) {
    mCreated = false;
    ::sem_destroy(&mSemaphore);
  }
}
