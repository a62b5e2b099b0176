#include "apps/zelvctl/Bell.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace ZelvCtl {

Bell::Bell() : mDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (mDescriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
}

Bell::~Bell() {
  ::close(mDescriptor);
}

void Bell::ring() {
  ::eventfd_write(mDescriptor, 1);
}

bool Bell::answer() {
  eventfd_t count = 0;
  return ::eventfd_read(mDescriptor, &count) == 0;
}

}  // namespace ZelvCtl
