#include "zelv/controller/CallsUnderWay.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "zelv/controller/InsideDelivery.h"
#include "zelv/platform/TestPlatform.h"

namespace {

using Zelv::Controller::CallsUnderWay;
using Zelv::Controller::InsideDelivery;
using Zelv::Platform::Testing::Event;

TEST(CallsUnderWay, AreNotWaitedForWhenThereAreNone) {
  CallsUnderWay calls;
  int object = 0;
  calls.waitForEnd(&object);
  { CallsUnderWay::Call const never(calls); }
  { CallsUnderWay::Call(calls).begin(&object); }
  calls.waitForEnd(&object);
  CallsUnderWay::Call call(calls);
  call.begin(&object);
  calls.waitForEnd(&object);  // from within: it is this thread's own
}

TEST(CallsUnderWay, AreWaitedForOnOtherThreads) {
  CallsUnderWay calls;
  int object = 0;
  int other = 0;
  Event begun;
  Event mayEnd;
  std::atomic<bool> ended{false};
  std::thread caller([&] {
    CallsUnderWay::Call call(calls);
    call.begin(&object);
    CallsUnderWay::Call second(calls);
    second.begin(&object);
    begun.happen();
    EXPECT_TRUE(mayEnd.wait());
    ended = true;
  });
  ASSERT_TRUE(begun.wait());
  calls.waitForEnd(&other);
  EXPECT_FALSE(ended);
  std::thread waiter([&] {
    calls.waitForEnd(&object);
    EXPECT_TRUE(ended);
  });
  mayEnd.happen();
  calls.waitForEnd(&object);
  EXPECT_TRUE(ended);
  waiter.join();
  caller.join();
}

// The one inside may be waiting for the lock that the delivery holds.
TEST(CallsUnderWay, AreNotWaitedForInsideADelivery) {
  CallsUnderWay calls;
  int object = 0;
  Event begun;
  Event mayEnd;
  bool ended = false;
  std::thread caller([&] {
    CallsUnderWay::Call call(calls);
    call.begin(&object);
    begun.happen();
    ended = mayEnd.wait();
  });
  ASSERT_TRUE(begun.wait());
  {
    InsideDelivery const outer;
    { InsideDelivery const inner; }
    calls.waitForEnd(&object);
  }
  mayEnd.happen();
  calls.waitForEnd(&object);
  caller.join();
  EXPECT_TRUE(ended) << "before the end of its patience";
}

TEST(CallsUnderWay, MayBeManyAtATime) {
  CallsUnderWay calls;
  std::vector<int> objects(4);
  std::vector<std::thread> threads;
  for (int& object : objects) {
    threads.emplace_back([&] {
      for (int turn = 0; turn < 1000; ++turn) {
        {
          CallsUnderWay::Call call(calls);
          call.begin(&object);
        }
        calls.waitForEnd(&objects[static_cast<std::size_t>(turn) % objects.size()]);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (int& object : objects) {
    calls.waitForEnd(&object);
  }
}

}  // namespace
