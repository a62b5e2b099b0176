#include "zelv/platform/fake/OwnNetwork.h"

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "zelv/platform/PCThread.h"

namespace Zelv::Platform::Fake {

namespace {

/// A process that needed a user namespace for it cannot go back, and stays.
bool theProcessHasOne = false;

void bringUpLoopback() {
  int const socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ifreq request{};
  std::strcpy(request.ifr_name, "lo");
  ::ioctl(socket, SIOCGIFFLAGS, &request);
  request.ifr_flags = static_cast<short>(request.ifr_flags | IFF_UP | IFF_RUNNING | IFF_MULTICAST);
  ::ioctl(socket, SIOCSIFFLAGS, &request);
  ::close(socket);
}

int lockMachinesNetwork() {
  int const file = ::open("/tmp/zelv-tests-network.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0666);
  ::flock(file, LOCK_EX);
  return file;
}

}  // namespace

OwnNetwork::OwnNetwork() : mOwn(theProcessHasOne) {
  if (mOwn) {
    return;
  }
  PCThread::ReleaseParked();
  int const before = ::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
  if (::unshare(CLONE_NEWNET) == 0) {
    mOwn = true;
    mDescriptor = before;
  } else {
    ::close(before);
    mOwn = theProcessHasOne = ::unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0;
  }
  if (mOwn) {
    bringUpLoopback();
  } else {
    mDescriptor = lockMachinesNetwork();
  }
}

OwnNetwork::~OwnNetwork() {
  PCThread::ReleaseParked();
  if (mOwn && mDescriptor >= 0) {
    ::setns(mDescriptor, CLONE_NEWNET);
  }
  if (mDescriptor >= 0) {
    ::close(mDescriptor);
  }
}

}  // namespace Zelv::Platform::Fake
