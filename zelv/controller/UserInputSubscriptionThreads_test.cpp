// The subscriptions of input with several threads in them at once.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "zelv/controller/InsideDelivery.h"
#include "zelv/controller/UserInputSubscriptionManager.h"
#include "zelv/controller/testing/RecordingUserCallback.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/Fakes.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::LogCapture;
using Testing::HeardInput;
using Testing::RecordingUserCallback;

constexpr std::chrono::seconds cLongEnough(20);

/// A subscriber that waits for the test in the middle of its call.
class Gated : public RecordingUserCallback {
 public:
  Gated() {
    reaction = [this](HeardInput const& aInput) {
      entered.release();
      if (!go.try_acquire_for(cLongEnough)) {
        return;
      }
      if (last) {
        last(aInput);
      }
      finished = true;
    };
  }

  std::counting_semaphore<> entered{0};
  std::counting_semaphore<> go{0};
  Reaction last;
  std::atomic<bool> finished{false};
};

class UserInputSubscriptionThreads : public ::testing::Test {
 protected:
  UserInputSubscriptionThreads()
      : gated(std::make_unique<Gated>()), id(manager.addSubscription("Key", gated.get(), "")) {}
  ~UserInputSubscriptionThreads() override { Platform::Fake::ResetFakes(); }

  /// Delivers an event on a thread of its own and comes back while the gated subscriber is told.
  std::jthread deliver() {
    std::jthread delivery([this] { manager.notifySubscribers("Key", "v", "d", "u"); });
    EXPECT_TRUE(gated->entered.try_acquire_for(cLongEnough));
    return delivery;
  }

  /// Ends the subscription on a thread of its own and comes back once that is under way.
  std::jthread removeElsewhere(std::function<void()> aBehind) {
    std::string const entry = "UserInputSubscriptionManager::removeSubscription: Entry.";
    int const before = log.count(PCRealDebug::Trace, entry);
    std::jthread remover([this, behind = std::move(aBehind)] {
      manager.removeSubscription(id);
      behind();
    });
    EXPECT_TRUE(log.waitFor(PCRealDebug::Trace, entry, before + 1));
    return remover;
  }

  LogCapture log;
  UserInputSubscriptionManager manager;
  std::unique_ptr<Gated> gated;
  GUID const id;
};

TEST_F(UserInputSubscriptionThreads, RemovalElsewhereReturnsWhenTheCallIsOver) {
  std::jthread delivery = deliver();
  bool finishedBefore = false;
  std::jthread remover = removeElsewhere([&] {
    finishedBefore = gated->finished;
    gated.reset();
  });
  gated->go.release();
  remover.join();
  delivery.join();
  EXPECT_TRUE(finishedBefore);
}

TEST_F(UserInputSubscriptionThreads, RemovalWaitsAlsoForACallThatHasEndedItsOwnSubscription) {
  std::binary_semaphore removed{0};
  gated->last = [&](HeardInput const& aInput) {
    manager.removeSubscription(aInput.id);
    removed.release();
    gated->go.try_acquire_for(cLongEnough);
  };
  std::jthread delivery = deliver();
  gated->go.release();
  ASSERT_TRUE(removed.try_acquire_for(cLongEnough));
  bool finishedBefore = false;
  std::jthread remover = removeElsewhere([&] { finishedBefore = gated->finished; });
  gated->go.release();
  remover.join();
  delivery.join();
  EXPECT_TRUE(finishedBefore);
}

// The subscriber may be waiting for the lock under which the delivery of the tree runs.
TEST_F(UserInputSubscriptionThreads, RemovalInsideADeliveryOfTheTreeWaitsForNobody) {
  std::jthread delivery = deliver();
  {
    InsideDelivery const inside;
    EXPECT_EQ(manager.removeSubscription(id), id);
  }
  EXPECT_FALSE(gated->finished);
  gated->go.release();
  delivery.join();
  EXPECT_TRUE(gated->finished);
}

TEST_F(UserInputSubscriptionThreads, AllWhoRemoveOneWaitAndOneSucceeds) {
  constexpr int cThreads = 8;
  std::jthread delivery = deliver();
  std::atomic<int> succeeded{0};
  std::atomic<int> early{0};
  std::vector<std::jthread> removers;
  for (int i = 0; i < cThreads; ++i) {
    removers.emplace_back([&] {
      succeeded += manager.removeSubscription(id) == id ? 1 : 0;
      early += gated->finished ? 0 : 1;
    });
  }
  EXPECT_TRUE(log.waitFor(PCRealDebug::Trace,
                          "UserInputSubscriptionManager::removeSubscription: Entry.", cThreads));
  gated->go.release();
  removers.clear();
  delivery.join();
  EXPECT_EQ(succeeded, 1);
  EXPECT_EQ(early, 0);
}

TEST_F(UserInputSubscriptionThreads, TableIsFreeWhileASubscriberIsTold) {
  std::jthread delivery = deliver();
  RecordingUserCallback other;
  GUID const otherId = manager.addSubscription("Text", &other, "");
  EXPECT_EQ(manager.getSubscriptionInfo(id).getType(), "Key");
  manager.notifySubscribers("Text", "v", "d", "u");
  EXPECT_EQ(manager.removeSubscription(otherId), otherId);
  EXPECT_EQ(manager.removeSubscription(GUID::createGUID()), GUID::nullGUID);
  EXPECT_FALSE(gated->finished);
  EXPECT_EQ(other.count(), 1U);
  gated->go.release();
}

TEST_F(UserInputSubscriptionThreads, CallbackMayWaitForOthersThatSubscribeAndUnsubscribe) {
  RecordingUserCallback other;
  GUID otherId = manager.addSubscription("Text", &other, "");
  gated->last = [&](HeardInput const&) {
    std::jthread([&] {
      manager.removeSubscription(otherId);
      otherId = manager.addSubscription("Text", &other, "");
    }).join();
  };
  std::jthread delivery = deliver();
  gated->go.release();
  delivery.join();
  EXPECT_TRUE(gated->finished);
  manager.notifySubscribers("Text", "v", "d", "u");
  EXPECT_EQ(other.count(), 1U);
}

TEST_F(UserInputSubscriptionThreads, SubscribersMadeElsewhereMeanwhileHearFromTheNextEventOn) {
  std::jthread delivery = deliver();
  RecordingUserCallback other;
  for (int i = 0; i < 20; ++i) {
    manager.addSubscription("Key", &other, "");
  }
  gated->go.release();
  delivery.join();
  EXPECT_EQ(other.count(), 0U);
  gated->go.release();
  manager.notifySubscribers("Key", "v", "d", "u");
  EXPECT_EQ(other.count(), 20U);
}

TEST_F(UserInputSubscriptionThreads, SubscribersThatAreRemovedElsewhereMeanwhileMayGoAtOnce) {
  std::jthread delivery = deliver();
  for (int i = 0; i < 20; ++i) {
    // Behind the gated one or before it: nobody is told in either case.
    auto other = std::make_unique<RecordingUserCallback>();
    GUID const otherId = manager.addSubscription("Key", other.get(), "");
    EXPECT_EQ(manager.removeSubscription(otherId), otherId);
  }
  EXPECT_FALSE(gated->finished);
  gated->go.release();
}

TEST_F(UserInputSubscriptionThreads, ManyThatComeAndGoAreNeverToldAfterwards) {
  constexpr int cThreads = 4;
  constexpr int cTurns = 200;
  manager.removeSubscription(id);
  std::atomic<int> busy{cThreads};
  std::atomic<int> late{0};
  std::vector<std::jthread> threads;
  for (int i = 0; i < cThreads; ++i) {
    threads.emplace_back([&] {
      for (int turn = 0; turn < cTurns; ++turn) {
        std::atomic<bool> ended{false};
        RecordingUserCallback mine([&](HeardInput const&) { late += ended ? 1 : 0; });
        GUID const mineId = manager.addSubscription("Key", &mine, "");
        mine.waitFor(1);
        manager.removeSubscription(mineId);
        ended = true;
      }
      --busy;
    });
  }
  while (busy > 0) {
    manager.notifySubscribers("Key", "v", "d", "u");
    std::this_thread::yield();
  }
  threads.clear();
  EXPECT_EQ(late, 0);
}

}  // namespace
}  // namespace Zelv::Controller
