#include "apps/zelv-tv/EventQueue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace ZelvTv {

EventQueue::EventQueue() : mDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (mDescriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
}

EventQueue::~EventQueue() {
  ::close(mDescriptor);
}

void EventQueue::Post(std::string aLine) {
  std::lock_guard const lock(mMutex);
  // Each line weighs more than its text, so that empty ones count too.
  std::size_t const weight = aLine.size() + sizeof(std::string);
  if (mBytes + weight > kMaximumBytes) {
    ++mLost;
  } else {
    mBytes += weight;
    mLines.push_back(std::move(aLine));
  }
  Wake();
}

void EventQueue::Wake() {
  ::eventfd_write(mDescriptor, 1);
}

std::vector<std::string> EventQueue::Take() {
  std::lock_guard const lock(mMutex);
  eventfd_t count = 0;
  ::eventfd_read(mDescriptor, &count);
  std::vector<std::string> lines = std::move(mLines);
  mLines.clear();
  if (mLost > 0) {
    lines.push_back("lost " + std::to_string(mLost));
  }
  mBytes = 0;
  mLost = 0;
  return lines;
}

}  // namespace ZelvTv
