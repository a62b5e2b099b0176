#include "zelv/controller/UserInputSubscriptionManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/controller/testing/RecordingUserCallback.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using ::testing::ElementsAre;
using Testing::HeardInput;
using ::testing::IsEmpty;
using Testing::RecordingUserCallback;
using ::testing::SizeIs;

/// Ends its subscription and itself with the first event.
class Mortal : public ICoreUserCallback {
 public:
  Mortal(UserInputSubscriptionManager& aManager, bool& aGone) : mManager(aManager), mGone(aGone) {}
  ~Mortal() override { mGone = true; }

  void onUserInput(std::string const&, std::string const&, std::string const&, std::string const&,
                   GUID const& aSubscriptionID) override {
    mManager.removeSubscription(aSubscriptionID);
    delete this;
  }
  void onStatus(StatusInformation const&, GUID const&) override {}

 private:
  UserInputSubscriptionManager& mManager;
  bool& mGone;
};

class UserInputSubscriptions : public ::testing::Test {
 protected:
  ~UserInputSubscriptions() override { Platform::Fake::ResetFakes(); }

  GUID add(RecordingUserCallback& aCallback, std::string const& aType = "Key") {
    return manager.addSubscription(aType, &aCallback, "");
  }

  void notify(std::string const& aType = "Key", std::string const& aValue = "v") {
    manager.notifySubscribers(aType, aValue, "device", "user");
  }

  /// Two callbacks that subscribe to the same type; the first is the one that is told first.
  struct Pair {
    RecordingUserCallback first;
    RecordingUserCallback second;
    GUID firstId;
    GUID secondId;
  };

  std::unique_ptr<Pair> addPair() {
    auto pair = std::make_unique<Pair>();
    pair->firstId = add(pair->first);
    pair->secondId = add(pair->second);
    while (!(pair->firstId < pair->secondId)) {
      manager.removeSubscription(pair->secondId);
      pair->secondId = add(pair->second);
    }
    return pair;
  }

  LogCapture log;
  UserInputSubscriptionManager manager;
};

// The table.

TEST_F(UserInputSubscriptions, KnowWhatTheyWereMadeOf) {
  RecordingUserCallback callback;
  GUID const id = manager.addSubscription("Key", &callback, "context");
  UserInputSubscription const info = manager.getSubscriptionInfo(id);
  EXPECT_EQ(info.getId(), id);
  EXPECT_EQ(info.getType(), "Key");
  EXPECT_EQ(info.getCallback(), &callback);
  EXPECT_EQ(info.getContext(), "context");
}

TEST_F(UserInputSubscriptions, AreEachOfTheirOwn) {
  RecordingUserCallback callback;
  GUID const first = add(callback);
  EXPECT_NE(first, add(callback));
  EXPECT_EQ(manager.removeSubscription(first), first);
  notify();
  EXPECT_EQ(callback.count(), 1U);
}

TEST_F(UserInputSubscriptions, AreGoneOnceRemoved) {
  RecordingUserCallback callback;
  GUID const id = add(callback);
  EXPECT_EQ(manager.removeSubscription(id), id);
  EXPECT_EQ(log.count(PCRealDebug::Warning), 0) << log.dump();
  EXPECT_EQ(manager.removeSubscription(id), GUID::nullGUID);
  notify();
  EXPECT_EQ(callback.count(), 0U);
}

TEST_F(UserInputSubscriptions, GiveTheNullIdAndAWarningForAnUnknownId) {
  EXPECT_EQ(manager.removeSubscription(GUID::createGUID()), GUID::nullGUID);
  EXPECT_THAT(
      log.texts(PCRealDebug::Warning),
      ElementsAre("UserInputSubscriptionManager::removeSubscription: Subscription not found!"));
}

TEST_F(UserInputSubscriptions, ThrowForInformationOnAnUnknownId) {
  try {
    manager.getSubscriptionInfo(GUID::createGUID());
    FAIL() << "nothing thrown";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(
        error.what(),
        "UserInputSubscriptionManager::getSubscriptionInfo() Cannot find subscription info ");
  }
  EXPECT_THAT(
      log.texts(PCRealDebug::Warning),
      ElementsAre("UserInputSubscriptionManager::getSubscriptionInfo: Subscription not found!"));
}

// Who is told.

TEST_F(UserInputSubscriptions, HearAllOfAnEventWithTheirOwnId) {
  RecordingUserCallback callback;
  GUID const id = add(callback);
  manager.notifySubscribers("Key", "<a/>", "device", "Anna");
  EXPECT_THAT(callback.heard(), ElementsAre(HeardInput{"Key", "<a/>", "device", "Anna", id}));
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "UserInputSubscriptionManager::notifySubscribers: type='Key', "
                          "value='<a/>', device='device', user='Anna'"));
}

TEST_F(UserInputSubscriptions, HearOnlyOfExactlyTheirType) {
  std::string const withNul("Key\0x", 5);
  std::vector<std::string> const types = {"Key", "key", "Key ", "Ke", "Keys", "*", "", withNul};
  std::vector<RecordingUserCallback> callbacks(types.size());
  for (std::size_t i = 0; i < types.size(); ++i) {
    add(callbacks[i], types[i]);
  }
  for (std::string const& type : types) {
    notify(type, type);
  }
  for (std::size_t i = 0; i < types.size(); ++i) {
    EXPECT_THAT(callbacks[i].values(), ElementsAre(types[i]));
  }
}

TEST_F(UserInputSubscriptions, AreToldInTheOrderOfTheirIds) {
  std::vector<GUID> told;
  std::vector<GUID> expected;
  RecordingUserCallback callback([&told](HeardInput const& aInput) { told.push_back(aInput.id); });
  RecordingUserCallback other;
  for (int i = 0; i < 50; ++i) {
    expected.push_back(add(callback));
    add(other, "Text");
  }
  std::sort(expected.begin(), expected.end());
  notify();
  EXPECT_EQ(told, expected);
  EXPECT_EQ(other.count(), 0U);
}

TEST_F(UserInputSubscriptions, LetATypeThatNobodyWantsPassInSilence) {
  RecordingUserCallback callback;
  add(callback, "Text");
  notify("Key");
  EXPECT_EQ(callback.count(), 0U);
  for (unsigned long const level :
       {PCRealDebug::Error, PCRealDebug::Warning, PCRealDebug::Notable, PCRealDebug::Detail}) {
    EXPECT_EQ(log.count(level), 0) << log.dump();
  }
}

// What a subscriber does.

TEST_F(UserInputSubscriptions, AreToldThoughOthersThrow) {
  auto const pair = addPair();
  pair->first.reaction = [](HeardInput const&) { throw std::runtime_error("no key"); };
  notify();
  pair->first.reaction = [](HeardInput const&) { throw 1; };
  notify();
  EXPECT_EQ(pair->first.count(), 2U);
  EXPECT_EQ(pair->second.count(), 2U);
  EXPECT_THAT(
      log.texts(PCRealDebug::Error),
      ElementsAre(
          "UserInputSubscriptionManager::notifySubscribers: Exception in a subscriber: no key",
          "UserInputSubscriptionManager::notifySubscribers: Unknown exception in a subscriber."));
}

TEST_F(UserInputSubscriptions, PassOverOneThatIsNull) {
  RecordingUserCallback callback;
  manager.addSubscription("Key", nullptr, "");
  add(callback);
  notify();
  EXPECT_EQ(callback.count(), 1U);
  EXPECT_THAT(log.texts(PCRealDebug::Warning),
              ElementsAre("UserInputSubscriptionManager::notifySubscribers: Found NULL "
                          "IBaseUserCallback pointer."));
}

TEST_F(UserInputSubscriptions, MayEndFromWithinTheirOwnCallback) {
  auto const pair = addPair();
  pair->first.reaction = [this](HeardInput const& aInput) {
    EXPECT_EQ(manager.removeSubscription(aInput.id), aInput.id);
  };
  notify();
  notify();
  EXPECT_EQ(pair->first.count(), 1U);
  EXPECT_EQ(pair->second.count(), 2U);
}

TEST_F(UserInputSubscriptions, MayEndWithTheSubscriberFromWithinItsCallback) {
  bool gone = false;
  manager.addSubscription("Key", new Mortal(manager, gone), "");
  notify();
  EXPECT_TRUE(gone);
  notify();
}

TEST_F(UserInputSubscriptions, AreNotToldOnceAnotherCallbackHasEndedThem) {
  auto const pair = addPair();
  pair->first.reaction = [&](HeardInput const&) { manager.removeSubscription(pair->secondId); };
  notify();
  EXPECT_EQ(pair->second.count(), 0U);
}

TEST_F(UserInputSubscriptions, AreToldWhenALaterCallbackEndsThem) {
  auto const pair = addPair();
  pair->second.reaction = [&](HeardInput const&) { manager.removeSubscription(pair->firstId); };
  notify();
  notify();
  EXPECT_EQ(pair->first.count(), 1U);
  EXPECT_EQ(pair->second.count(), 2U);
}

TEST_F(UserInputSubscriptions, MadeWithinACallbackHearFromTheNextEventOn) {
  RecordingUserCallback added;
  RecordingUserCallback adding([&](HeardInput const&) {
    for (int i = 0; i < 20; ++i) {
      add(added);
    }
  });
  GUID const id = add(adding);
  notify("Key", "first");
  EXPECT_THAT(added.heard(), IsEmpty());
  manager.removeSubscription(id);
  notify("Key", "second");
  EXPECT_THAT(added.heard(), SizeIs(20));
}

TEST_F(UserInputSubscriptions, MayAskAfterThemselvesWithinACallback) {
  RecordingUserCallback callback([this](HeardInput const& aInput) {
    EXPECT_EQ(manager.getSubscriptionInfo(aInput.id).getType(), "Key");
  });
  add(callback);
  notify();
  EXPECT_EQ(callback.count(), 1U);
}

}  // namespace
}  // namespace Zelv::Controller
