#include "zelv/controller/QueueReaper.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>
#include <utility>

#include "zelv/controller/testing/Phone.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeThreads.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace {

using Zelv::Adapter::NetworkAdapter;
using Zelv::Controller::DeviceServiceQueue;
using Zelv::Controller::QueueReaper;
using Zelv::Controller::Testing::Phone;
using Zelv::Infrastructure::URL;
using Zelv::Platform::Fake::FakeThreads;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Fake::ResetFakes;

class Reaper : public testing::Test {
 protected:
  Reaper() : mAdapter(NetworkAdapter::getInstance()) { ResetFakes(); }
  ~Reaper() override { ResetFakes(); }

  /// In the middle of a send that nobody acknowledges.
  std::unique_ptr<DeviceServiceQueue> busy() {
    auto queue = std::make_unique<DeviceServiceQueue>();
    EXPECT_TRUE(queue->initialize(URL(mPhone.url()), "phone"));
    queue->postCommand("text");
    EXPECT_TRUE(mPhone.waitFor(++mBusy));
    return queue;
  }

  static bool emptied(QueueReaper const& aReaper) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (aReaper.getPending() > 0 && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
    }
    return aReaper.getPending() == 0;
  }

  Zelv::Platform::Fake::OwnNetwork mNetwork;
  std::unique_ptr<NetworkAdapter> mAdapter;
  Phone mPhone{Phone::KeepsSilent};
  std::size_t mBusy = 0;
};

TEST_F(Reaper, DeletesQueuesByItself) {
  QueueReaper reaper;
  LogCapture const log;
  for (int i = 0; i < 5; ++i) {
    reaper.retire(busy());
  }
  EXPECT_TRUE(emptied(reaper));
  EXPECT_EQ(5, log.countContaining(PCRealDebug::Trace,
                                   "DeviceServiceQueue::~DeviceServiceQueue: Exit for ID="));
}

TEST_F(Reaper, HasNoThreadBeforeTheFirstQueue) {
  QueueReaper reaper;
  reaper.retire(nullptr);
  EXPECT_EQ(0U, reaper.GetId());
  reaper.retire(busy());
  EXPECT_NE(0U, reaper.GetId());
}

TEST_F(Reaper, HasDeletedAllWhenItIsDrainedAndGoesOnAfterwards) {
  QueueReaper reaper;
  for (int turn = 0; turn < 3; ++turn) {
    reaper.retire(busy());
    reaper.retire(busy());
    reaper.drain();
    EXPECT_EQ(0U, reaper.getPending());
    EXPECT_EQ(0U, reaper.GetId());
  }
  reaper.drain();
}

TEST_F(Reaper, DeletesWhatIsLeftAtItsEnd) {
  LogCapture const log;
  {
    QueueReaper reaper;
    reaper.retire(busy());
  }
  EXPECT_EQ(1, log.countContaining(PCRealDebug::Trace,
                                   "DeviceServiceQueue::~DeviceServiceQueue: Exit for ID="));
}

TEST_F(Reaper, KeepsQueuesForTheDrainWithoutAThreadAndTriesAgainWithTheNext) {
  QueueReaper reaper;
  auto first = busy();
  auto second = busy();
  LogCapture const log;
  FakeThreads::FailNext(1);
  reaper.retire(std::move(first));
  EXPECT_TRUE(log.has(PCRealDebug::Warning, "QueueReaper::start: Error creating a new thread"));
  EXPECT_EQ(1U, reaper.getPending());
  reaper.retire(std::move(second));
  EXPECT_TRUE(emptied(reaper));
  FakeThreads::FailNext(1);
  reaper.drain();
  reaper.retire(std::make_unique<DeviceServiceQueue>());
  EXPECT_EQ(1U, reaper.getPending());
  reaper.drain();
  EXPECT_EQ(0U, reaper.getPending());
}

TEST_F(Reaper, TriesAgainForAThreadWhenItIsToldTo) {
  QueueReaper reaper;
  reaper.resume();
  EXPECT_EQ(0U, reaper.GetId()) << "there is nothing to do";
  auto queue = busy();
  FakeThreads::FailNext(1);
  reaper.retire(std::move(queue));
  EXPECT_EQ(1U, reaper.getPending());
  reaper.resume();
  reaper.resume();
  EXPECT_TRUE(emptied(reaper));
}

TEST_F(Reaper, TakesQueuesUnderALockThatOthersWaitFor) {
  PCMutex lock;
  QueueReaper reaper;
  auto queue = busy();
  {
    TCAutoLock hold(lock);
    reaper.retire(std::move(queue));
    EXPECT_TRUE(emptied(reaper)) << "the reaper waits for nobody's lock";
  }
}

TEST_F(Reaper, TakesQueuesOnManyThreads) {
  QueueReaper reaper;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int turn = 0; turn < 25; ++turn) {
        auto queue = std::make_unique<DeviceServiceQueue>();
        EXPECT_TRUE(queue->initialize(URL(mPhone.url()), "phone"));
        reaper.retire(std::move(queue));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  reaper.drain();
  EXPECT_EQ(0U, reaper.getPending());
}

}  // namespace
