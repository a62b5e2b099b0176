// Starting and stopping again and again in one process: what is used afterwards is what was used
// before.

#include <gtest/gtest.h>
#include <malloc.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <semaphore>

#include "tests/Answers.h"
#include "tests/TemporarySet.h"
#include "zelv/Zelv.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/PCThread.h"

// A sanitizer brings its own heap, and with it a count of its own, under a name of its own.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace {

using Zelv::GUID;
using Zelv::InterfaceFactory;

constexpr int cRounds = 1000;
constexpr int cWarmUp = 20;
/// Lists of the allocator and of the C library that settle at different lengths. A loss of 16 bytes
/// a round would exceed it.
constexpr std::size_t cSlack = 12288;

std::size_t entriesOf(char const* aDirectory) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(aDirectory),
                                                std::filesystem::directory_iterator()));
}

std::size_t heapInUse() {
  if (__sanitizer_get_current_allocated_bytes != nullptr) {
    return __sanitizer_get_current_allocated_bytes();
  }
  struct mallinfo2 const info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

struct Usage {
  std::size_t threads = 0;
  std::size_t descriptors = 0;
  std::size_t heap = 0;
};

/// What the process holds while the library is down.
Usage usage() {
  PCThread::ReleaseParked();
  return {entriesOf("/proc/self/task"), entriesOf("/proc/self/fd"), heapInUse()};
}

class Tick : public Zelv::IBaseTimerCallback {
 public:
  void onTimer(std::string const&, GUID) override { wentOff.release(); }
  void onStatus(Zelv::StatusInformation const&, GUID const&) override {}

  std::counting_semaphore<> wentOff{0};
};

/// One life of the system, with a little of everything in it. @return false when it failed.
bool live() {
  if (!InterfaceFactory::initialize()) {
    return false;
  }
  auto* const library = InterfaceFactory::getInterface(Zelv::IID_IAppData);
  auto* const data = dynamic_cast<Zelv::IAppData*>(library);
  auto* const timers = dynamic_cast<Zelv::IAppTimer*>(library);
  Tick tick;
  Answers answers;
  GUID const timer = timers->createTimer(1, -1, "tick", &tick);
  timers->createTimer(60000, -1, "left alone", &tick);
  data->subscribeData("/Zelv/Configuration/UPnP/Ping", nullptr, &answers);
  data->requestData("/Zelv/Applications", nullptr, &answers);
  data->requestData("/Zelv/Nothing", nullptr, &answers);
  bool good = true;
  for (int i = 0; i < 4; ++i) {
    good = answers.next().has_value() && good;
  }
  good = tick.wentOff.try_acquire_for(std::chrono::seconds(20)) && good;
  timers->destroyTimer(timer, nullptr);
  data->requestData("/Zelv/Configuration", nullptr, &answers);
  InterfaceFactory::terminate();
  return good;
}

TEST(StartStop, AThousandTimesLeavesMemoryThreadsAndDescriptorsAsTheyWere) {
  TemporarySet const set;
  PCRealDebug::Silence();
  for (int round = 0; round < cWarmUp; ++round) {
    ASSERT_TRUE(live()) << "while warming up";
  }
  Usage const before = usage();
  for (int round = 0; round < cRounds; ++round) {
    ASSERT_TRUE(live()) << "round " << round;
  }
  Usage const after = usage();
  PCRealDebug::SetLevel(PCRealDebug::Warning);
  EXPECT_EQ(after.threads, before.threads);
  EXPECT_EQ(after.descriptors, before.descriptors);
  EXPECT_LE(after.heap, before.heap + cSlack);
}

}  // namespace
