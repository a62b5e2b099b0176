#include "zelv/controller/DataSubscriptionManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/controller/testing/Elsewhere.h"
#include "zelv/controller/testing/FakeCoreData.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/controller/testing/RunningSystem.h"
#include "zelv/platform/PCSemaphore.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Testing::Elsewhere;
using Testing::FakeCoreData;
using Testing::Heard;
using ::testing::IsEmpty;
using ::testing::Not;
using Testing::RecordingCallback;
using Testing::RunningSystem;
using ::testing::SizeIs;

char const cDevice[] = "2cb63c08-01e0-41cd-950e-1566f18e0983";

class Context : public ContextInformation {};

class DataSubscriptionManagerTest : public ::testing::Test {
 protected:
  FakeCoreData tree;
  RecordingCallback callback;
  RecordingCallback second;
  DataSubscriptionManager manager{FakeCoreData::find};

  GUID add(std::string const& aPath) {
    return manager.addSubscription(aPath, &callback, nullptr, false);
  }

  /// What a change brings about for a subscription: "direct", "read", or the text of the skip.
  std::string outcome(std::string const& aSubscribed, std::string const& aChanged,
                      IBaseDataCallback* aExcluded = nullptr) {
    LogCapture log;
    std::size_t const told = callback.count();
    std::size_t const read = tree.requests.size();
    GUID const id = add(aSubscribed);
    manager.notifySubscribers(aChanged, "new", aExcluded);
    manager.removeSubscription(id);
    if (callback.count() > told) {
      return "direct";
    }
    if (tree.requests.size() > read) {
      return "read " + tree.requests.back().path;
    }
    std::string const head = "DataSubscriptionManager::notifySubscribers: ";
    for (std::string const& text : log.texts(PCRealDebug::Detail)) {
      if (text.starts_with(head)) {
        return text.substr(head.size());
      }
    }
    return "nothing";
  }
};

// The table.

TEST_F(DataSubscriptionManagerTest, GivesEachEntryAnIdAndKeepsWhatItWasGiven) {
  Context context;
  GUID const first = manager.addSubscription("/Zelv/a", &callback, &context, true);
  GUID const other = manager.addSubscription("/Zelv/a", nullptr, nullptr, false);
  EXPECT_FALSE(first == other);
  DataSubscription const info = manager.getSubscriptionInfo(first);
  EXPECT_EQ(info.getId(), first);
  EXPECT_EQ(info.getXPath(), "/Zelv/a");
  EXPECT_EQ(info.getSubscriber(), &callback);
  EXPECT_EQ(info.getContext(), &context);
  EXPECT_TRUE(info.isOneTimeDelivery());
  EXPECT_FALSE(manager.getSubscriptionInfo(other).isOneTimeDelivery());
}

TEST_F(DataSubscriptionManagerTest, RemovesAnEntryAndReturnsItsId) {
  GUID const id = add("/Zelv/a");
  EXPECT_EQ(manager.removeSubscription(id), id);
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_THAT(callback.heard(), IsEmpty());
}

template <typename Operation>
std::string textThrownBy(Operation aOperation) {
  try {
    aOperation();
  } catch (std::runtime_error const& error) {
    return error.what();
  }
  return "nothing thrown";
}

TEST_F(DataSubscriptionManagerTest, RefusesToRemoveAnIdThatIsAlreadyRemoved) {
  LogCapture log;
  GUID const id = add("/Zelv/a");
  manager.removeSubscription(id);
  EXPECT_EQ(textThrownBy([&] { manager.removeSubscription(id); }), "Data subscription not found!");
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "DataSubscriptionManager::removeSubscription: Subscription not found!"));
}

TEST_F(DataSubscriptionManagerTest, KnowsNothingOfAnUnknownId) {
  LogCapture log;
  EXPECT_EQ(textThrownBy([&] { manager.getSubscriptionInfo(GUID::createGUID()); }),
            "Data subscription not found!");
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "DataSubscriptionManager::GetSubscriptionInfo: Subscription not found!"));
}

// The rules, one by one.

struct Example {
  std::string subscribed;
  std::string changed;
  std::string outcome;
};

TEST_F(DataSubscriptionManagerTest, DecidesTheCommonCases) {
  std::string const f = "Skipped subscription for unchanged attribute.";
  std::string const e = "Skipped change in sibling node (different ID).";
  std::string const h = "Skipped unmatched XPath.";
  std::vector<Example> const examples = {
      {"/Zelv/Devices/Mobile/@ID", "/Zelv/Devices/Mobile/@ID", "direct"},
      {"/Zelv/Devices/Mobile/@ID", "/Zelv/Devices/Mobile[@ID='a']/Name/text()", f},
      {"/Zelv/Devices/Mobile/@ID", "/Zelv/Devices/Mobile", "read /Zelv/Devices/Mobile/@ID"},
      {"/Zelv/Users/User[@ID='a']/Name/text()", "/Zelv/Users/User[@ID='b']/Name/text()", e},
      {"/Zelv/Users/User[@ID='a']", "/Zelv/Users/User[@ID='a']/Name/text()",
       "read /Zelv/Users/User[@ID='a']"},
      {"/Zelv/Configuration", "/Zelv/Devices/x", h},
      // A leaf hears of a branch being replaced, a branch of a change below.
      {"/Zelv/a/b/c/text()", "/Zelv/a", "read /Zelv/a/b/c/text()"},
      {"/Zelv/a", "/Zelv/a/b/c/text()", "read /Zelv/a"},
      // Plain text, with no regard for steps.
      {"/Zelv/Device", "/Zelv/Devices/x", "read /Zelv/Device"},
      // The text of a node that is no attribute.
      {"/Zelv/a/b", "/Zelv/a/b/text()", "read /Zelv/a/b"},
      // Rule f wants no predicate in the subscription.
      {"/Zelv/a[@ID='1']/@x", "/Zelv/a[@ID='1']/text()", "read /Zelv/a[@ID='1']/@x"},
  };
  for (Example const& example : examples) {
    EXPECT_EQ(outcome(example.subscribed, example.changed), example.outcome)
        << example.subscribed << " on " << example.changed;
  }
}

TEST_F(DataSubscriptionManagerTest, DeliversAnExactMatchOnAnAttribute) {
  EXPECT_EQ(outcome("/Zelv/a/@text()", "/Zelv/a/@text()"), "direct");
  EXPECT_EQ(outcome("/Zelv/a/@x", "/Zelv/a/@x"), "direct");
}

TEST_F(DataSubscriptionManagerTest, TakesOnlyDifferentIdsOfOneElementForSiblings) {
  EXPECT_EQ(outcome("/Zelv/a[@X='1']/b", "/Zelv/a[@X='2']/b"), "read /Zelv/a[@X='1']/b");
  EXPECT_EQ(outcome("/Zelv/a[@ID='1']/b", "/Zelv/a[@X='2']/b"), "read /Zelv/a[@ID='1']/b");
  EXPECT_EQ(outcome("/Zelv/a[@ID='1']/b", "/Zelv/b[@ID='2']/b"), "Skipped unmatched XPath.");
  EXPECT_EQ(outcome("/Zelv/a[@ID='1']/b", "/Zelv/a[@ID='1']/b/c"), "read /Zelv/a[@ID='1']/b");
  EXPECT_EQ(outcome("/Zelv/a[@IDENT='1']/b", "/Zelv/a[@ID='2']/b"),
            "Skipped change in sibling node (different ID).");
}

TEST_F(DataSubscriptionManagerTest, TakesTheOwnIdFormOfASubscriptionForLocal) {
  manager.setLocalDeviceId(GUID(cDevice));
  std::string const own = std::string("/Zelv[@DeviceId='") + cDevice + "']/a";
  EXPECT_EQ(outcome(own, "/Zelv/a"), "read " + own);
  std::string const quoted = std::string("/Zelv[@DeviceId=\"") + cDevice + "\"]/a";
  EXPECT_EQ(outcome(quoted, "/Zelv/a/b"), "read " + quoted);
}

TEST_F(DataSubscriptionManagerTest, TakesTheOwnIdFormForRemoteUntilItKnowsItsOwnId) {
  std::string const own = std::string("/Zelv[@DeviceId='") + cDevice + "']/a";
  EXPECT_EQ(outcome(own, "/Zelv/a"), "Skipped subscription for remote data.");
  EXPECT_EQ(outcome("/Zelv/a", "/Zelv/a"), "direct");
  GUID const early = add(own);
  manager.setLocalDeviceId(GUID(cDevice));
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  ASSERT_THAT(tree.requests, SizeIs(1));
  EXPECT_EQ(tree.requests[0].path, own);
  manager.setLocalDeviceId(GUID::createGUID());
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_THAT(tree.requests, SizeIs(1));
  manager.removeSubscription(early);
}

TEST_F(DataSubscriptionManagerTest, LetsAChangeOfTheOwnIdFormPass) {
  EXPECT_EQ(outcome("/Zelv/a", "/Zelv[@DeviceId='x']/a"), "read /Zelv/a");
  EXPECT_EQ(outcome("/Zelv/b", "/Zelv[@DeviceId='x']/a"), "Skipped unmatched XPath.");
  // Its predicate is the first one, and no ID.
  EXPECT_EQ(outcome("/Zelv/a[@ID='1']", "/Zelv[@DeviceId='x']/a[@ID='2']"),
            "read /Zelv/a[@ID='1']");
}

TEST_F(DataSubscriptionManagerTest, SkipsTheExcludedSubscriberAndNoOther) {
  EXPECT_EQ(outcome("/Zelv/a", "/Zelv/a", &callback), "Skipped remote data controller.");
  add("/Zelv/a");
  add("/Zelv/a/b");
  add("/Zelv/a/@x");
  manager.addSubscription("/Zelv/a", &second, nullptr, false);
  manager.notifySubscribers("/Zelv/a", "new", &callback);
  EXPECT_THAT(callback.heard(), IsEmpty());
  EXPECT_THAT(tree.requests, IsEmpty());
  EXPECT_EQ(second.count(), 1U);
}

TEST_F(DataSubscriptionManagerTest, TreatsAllAlikeWhenNobodyIsExcluded) {
  add("/Zelv/a");
  manager.addSubscription("/Zelv/a", &second, nullptr, false);
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_EQ(callback.count(), 1U);
  EXPECT_EQ(second.count(), 1U);
}

TEST_F(DataSubscriptionManagerTest, TellsSubscribersOfOnePathInAscendingOrderOfTheirIds) {
  std::vector<GUID> ids;
  for (int index = 0; index < 50; ++index) {
    ids.push_back(add("/Zelv/a"));
  }
  std::sort(ids.begin(), ids.end());
  for (bool const detail : {false, true}) {
    std::size_t const before = callback.count();
    std::unique_ptr<LogCapture> const log(detail ? new LogCapture : nullptr);
    manager.notifySubscribers("/Zelv/a", "new", nullptr);
    std::vector<GUID> told;
    for (Heard const& heard : callback.heard()) {
      told.push_back(heard.id);
    }
    told.erase(told.begin(), told.begin() + static_cast<long>(before));
    EXPECT_EQ(told, ids);
  }
}

TEST_F(DataSubscriptionManagerTest, HandsBackPathValueContextAndIdAtOnce) {
  Context context;
  GUID const id = manager.addSubscription("/Zelv/a", &callback, &context, false);
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  ASSERT_THAT(callback.heard(), SizeIs(1));
  Heard const heard = callback.heard()[0];
  EXPECT_EQ(heard.path, "/Zelv/a");
  EXPECT_EQ(heard.value, "new");
  EXPECT_EQ(heard.context, &context);
  EXPECT_EQ(heard.id, id);
  EXPECT_EQ(heard.thread, std::this_thread::get_id());
}

// Reading again.

TEST_F(DataSubscriptionManagerTest, PassesOnTheValueThatWasReadNotTheOneReported) {
  Context context;
  GUID const id = manager.addSubscription("/Zelv/a", &callback, &context, false);
  manager.notifySubscribers("/Zelv/a/b", "reported", nullptr);
  ASSERT_THAT(tree.requests, SizeIs(1));
  EXPECT_EQ(tree.requests[0].path, "/Zelv/a");
  EXPECT_EQ(tree.requests[0].callback, static_cast<IBaseDataCallback*>(&manager));
  EXPECT_THAT(callback.heard(), IsEmpty());
  tree.answer(tree.requests[0], "read");
  ASSERT_THAT(callback.heard(), SizeIs(1));
  Heard const heard = callback.heard()[0];
  EXPECT_EQ(heard.path, "/Zelv/a");
  EXPECT_EQ(heard.value, "read");
  EXPECT_EQ(heard.context, &context);
  EXPECT_EQ(heard.id, id);
}

TEST_F(DataSubscriptionManagerTest, OnlyWarnsWhenTheSubscriptionIsGoneByTheTimeOfTheAnswer) {
  LogCapture log;
  GUID const id = add("/Zelv/a");
  manager.notifySubscribers("/Zelv/a/b", "reported", nullptr);
  manager.removeSubscription(id);
  tree.answer(tree.requests.at(0), "read");
  EXPECT_THAT(callback.heard(), IsEmpty());
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "DataSubscriptionManager::notifySubscriber: subscription '" +
                              id.toString() + "' not found."));
}

TEST_F(DataSubscriptionManagerTest, TellsASubscriberNothingOfAFailedRead) {
  add("/Zelv/a");
  manager.notifySubscribers("/Zelv/a/b", "reported", nullptr);
  // A read under no provider fails twice.
  tree.fail(tree.requests.at(0));
  tree.fail(tree.requests.at(0));
  // What comes after a failure belongs to nothing.
  tree.answer(tree.requests.at(0), "read");
  EXPECT_THAT(callback.heard(), IsEmpty());
  manager.notifySubscribers("/Zelv/a/b", "reported", nullptr);
  tree.answer(tree.requests.at(1), "read");
  EXPECT_EQ(callback.count(), 1U);
}

TEST_F(DataSubscriptionManagerTest, GoesByTheTransactionAndNeverLooksThroughAContext) {
  add("/Zelv/a");
  manager.notifySubscribers("/Zelv/a/b", "reported", nullptr);
  // Not an object at all: what a stranger's context may be.
  auto const* const nonsense = reinterpret_cast<ContextInformation const*>(0x10);
  manager.onData("/Zelv/a", "stray", nonsense, GUID::createGUID());
  EXPECT_THAT(callback.heard(), IsEmpty());
  manager.onData("/Zelv/other", "read", nonsense, tree.requests.at(0).id);
  EXPECT_EQ(callback.count(), 1U);
  // Answered once, it is over.
  tree.answer(tree.requests.at(0), "read");
  EXPECT_EQ(callback.count(), 1U);
}

TEST_F(DataSubscriptionManagerTest, AnswersThatNeverComeGoWithTheManager) {
  auto own = std::make_unique<DataSubscriptionManager>(FakeCoreData::find);
  own->addSubscription("/Zelv/a", &callback, nullptr, false);
  own->notifySubscribers("/Zelv/a/b", "reported", nullptr);
  EXPECT_THAT(tree.requests, SizeIs(1));
  // That nothing stays behind is for the leak check to see.
  own.reset();
  EXPECT_THAT(callback.heard(), IsEmpty());
}

TEST_F(DataSubscriptionManagerTest, LeavesTheWholeChangeWhenThereIsNoTree) {
  LogCapture log;
  DataSubscriptionManager alone(+[]() -> ICoreData* { return nullptr; });
  alone.addSubscription("/Zelv/a", &callback, nullptr, false);
  alone.addSubscription("/Zelv/a", &callback, nullptr, false);
  std::string const text =
      "DataSubscriptionManager::notifySubscribers: Failed to obtain ICoreData interface.";
  alone.notifySubscribers("/Zelv/a/b", "reported", nullptr);
  EXPECT_EQ(log.count(PCRealDebug::Error, text), 1) << log.dump();
  PCRealDebug::SetLevel(PCRealDebug::Warning);
  alone.notifySubscribers("/Zelv/a/b", "reported", nullptr);
  EXPECT_EQ(log.count(PCRealDebug::Error, text), 2) << log.dump();
}

TEST(DataSubscriptionManager, FindsNoTreeWhileTheLibraryCannotStart) {
  // Nothing to start from: neither directory holds a file.
  Platform::Fake::TemporaryDirectories directories;
  LogCapture log;
  RecordingCallback callback;
  DataSubscriptionManager manager;
  manager.addSubscription("/Zelv/a", &callback, nullptr, false);
  manager.notifySubscribers("/Zelv/a/b", "reported", nullptr);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "DataSubscriptionManager::notifySubscribers: Failed "
                          "to obtain ICoreData interface."));
}

TEST(DataSubscriptionManager, ReadsThroughTheLibraryThatRuns) {
  RecordingCallback callback;
  DataSubscriptionManager manager;
  RunningSystem system;
  ASSERT_TRUE(system.started);
  manager.addSubscription("/Zelv/Configuration/A/text()", &callback, nullptr, false);
  manager.notifySubscribers("/Zelv/Configuration", "reported", nullptr);
  ASSERT_TRUE(callback.waitFor(1));
  EXPECT_EQ(callback.heard()[0].value, "1");
}

/// A path that the manager takes for this device's and the tree for another's: its reads are
/// requests that nobody answers.
TEST_F(DataSubscriptionManagerTest, BoundsReadsThatBecomeRequestsToAnotherDevice) {
  tree.makeId = [this](std::string const& aXPath, ContextInformation const* aContext,
                       IBaseDataCallback* aCallback) {
    return manager.addSubscription(aXPath, aCallback, aContext, true);
  };
  add("/Zelv/a");
  std::size_t const bound = DataSubscriptionManager::cAnsweredEntries;
  for (std::size_t count = 0; count < bound + 1; ++count) {
    manager.notifySubscribers("/Zelv/a/b", "reported", nullptr);
  }
  // An answer comes by the entry, and then goes on as any other.
  EXPECT_THROW(manager.getSubscriptionInfo(tree.requests.at(0).id), std::runtime_error);
  manager.notifySubscriber(tree.requests.at(1).id, "read");
  EXPECT_EQ(callback.count(), 1U);
}

// One subscriber.

TEST_F(DataSubscriptionManagerTest, TellsOneSubscriberByItsId) {
  Context context;
  GUID const id = manager.addSubscription("/Other", &callback, &context, true);
  manager.notifySubscriber(id, "answer");
  ASSERT_THAT(callback.heard(), SizeIs(1));
  EXPECT_EQ(callback.heard()[0].path, "/Other");
  EXPECT_EQ(callback.heard()[0].value, "answer");
  EXPECT_EQ(callback.heard()[0].context, &context);
  EXPECT_EQ(callback.heard()[0].id, id);
}

TEST_F(DataSubscriptionManagerTest, KeepsAnAnsweredRequestUntilItIsRemoved) {
  GUID const id = manager.addSubscription("/Other", &callback, nullptr, true);
  manager.notifySubscriber(id, "1");
  manager.notifySubscriber(id, "2");
  EXPECT_EQ(callback.count(), 2U);
  manager.removeSubscription(id);
  LogCapture log;
  manager.notifySubscriber(id, "3");
  EXPECT_EQ(callback.count(), 2U);
  EXPECT_EQ(log.count(PCRealDebug::Warning), 1);
}

TEST_F(DataSubscriptionManagerTest, KeepsTheNewestAnsweredRequestsAndAllUnansweredOnes) {
  std::size_t const bound = DataSubscriptionManager::cAnsweredEntries;
  GUID const waiting = manager.addSubscription("/Other", &callback, nullptr, true);
  GUID const subscription = manager.addSubscription("/Other", &callback, nullptr, false);
  manager.notifySubscriber(subscription, "first");
  std::vector<GUID> ids;
  for (std::size_t count = 0; count < bound; ++count) {
    ids.push_back(manager.addSubscription("/Other", &callback, nullptr, true));
    manager.notifySubscriber(ids.back(), "answer");
  }
  // Just at the bound everything is still there, and a second answer makes nothing older.
  manager.notifySubscriber(ids[0], "again");
  EXPECT_EQ(callback.count(), bound + 2);
  GUID const oneMore = manager.addSubscription("/Other", &callback, nullptr, true);
  manager.notifySubscriber(oneMore, "answer");
  EXPECT_THROW(manager.getSubscriptionInfo(ids[0]), std::runtime_error);
  for (GUID const& id : {ids[1], ids.back(), oneMore, waiting, subscription}) {
    EXPECT_EQ(manager.getSubscriptionInfo(id).getId(), id);
  }
}

TEST_F(DataSubscriptionManagerTest, CountsNoRemovedRequestAmongTheAnsweredOnes) {
  std::vector<GUID> ids;
  for (std::size_t count = 0; count < DataSubscriptionManager::cAnsweredEntries; ++count) {
    ids.push_back(manager.addSubscription("/Other", &callback, nullptr, true));
    manager.notifySubscriber(ids.back(), "answer");
  }
  manager.removeSubscription(ids[7]);
  GUID const oneMore = manager.addSubscription("/Other", &callback, nullptr, true);
  manager.notifySubscriber(oneMore, "answer");
  EXPECT_EQ(manager.getSubscriptionInfo(ids[0]).getId(), ids[0]);
}

TEST_F(DataSubscriptionManagerTest, ARequestMayRemoveItselfWhileItIsAnswered) {
  std::string const path(100, 'x');
  GUID const id = manager.addSubscription(path, &callback, nullptr, true);
  callback.reaction = [&](Heard const&) { manager.removeSubscription(id); };
  manager.notifySubscriber(id, "answer");
  EXPECT_EQ(callback.heard().at(0).path, path);
  EXPECT_THROW(manager.getSubscriptionInfo(id), std::runtime_error);
}

// The log.

TEST_F(DataSubscriptionManagerTest, LogsEachTextAtItsLevel) {
  struct Line {
    unsigned long level;
    std::string text;
    std::function<void()> bringAbout;
  };
  std::string const all = "DataSubscriptionManager::notifySubscribers: ";
  auto const change = [this](std::string const& aPath, IBaseDataCallback* aExcluded = nullptr) {
    manager.notifySubscribers(aPath, "new", aExcluded);
  };
  std::vector<Line> const lines = {
      {PCRealDebug::Error, all + "Invalid XPath 'Zelv/a', missing '/Zelv' prefix.",
       [&] { change("Zelv/a"); }},
      {PCRealDebug::Detail, all + "Skipped subscription for remote data.",
       [&] { add("/Zelv[@DeviceId='x']/a"), change("/Zelv/a"); }},
      {PCRealDebug::Detail, all + "Skipped one time subscription (requestData).",
       [&] {
         manager.addSubscription("/Zelv/a", &callback, nullptr, true);
         change("/Zelv/a");
       }},
      {PCRealDebug::Detail, all + "Skipped remote data controller.",
       [&] { add("/Zelv/a"), change("/Zelv/a", &callback); }},
      {PCRealDebug::Warning, all + "Found NULL IBaseDataCallback pointer!!!.",
       [&] {
         manager.addSubscription("/Zelv/a", nullptr, nullptr, false);
         change("/Zelv/a", &callback);
       }},
      {PCRealDebug::Detail, all + "Skipped change in sibling node (different ID).",
       [&] { add("/Zelv/a[@ID='1']"), change("/Zelv/a[@ID='2']"); }},
      {PCRealDebug::Detail, all + "Skipped subscription for unchanged attribute.",
       [&] { add("/Zelv/a/@x"), change("/Zelv/a/text()"); }},
      {PCRealDebug::Detail, all + "Skipped unmatched XPath.",
       [&] { add("/Zelv/a"), change("/Zelv/b"); }},
      {PCRealDebug::Detail, all + "requesting data for XPath '/Zelv/a'",
       [&] { add("/Zelv/a"), change("/Zelv/a/b"); }},
      {PCRealDebug::Warning,
       "DataSubscriptionManager::notifySubscriber: Found NULL IBaseDataCallback pointer!!!.",
       [&] {
         manager.notifySubscriber(manager.addSubscription("/Zelv/z", nullptr, nullptr, false), "");
       }},
      {PCRealDebug::Trace, "DataSubscriptionManager::onReturn: Entry.",
       [&] { manager.onReturn("", GUID::nullGUID); }},
      {PCRealDebug::Trace, "DataSubscriptionManager::onReturn: Exit.",
       [&] { manager.onReturn("", GUID::nullGUID); }},
      {PCRealDebug::Trace, "DataSubscriptionManager::onStatus: Entry.",
       [&] { manager.onStatus(StatusInformation(std::exception()), GUID::nullGUID); }},
      {PCRealDebug::Trace, "DataSubscriptionManager::onStatus: Exit.",
       [&] { manager.onStatus(StatusInformation(std::exception()), GUID::nullGUID); }},
  };
  for (Line const& line : lines) {
    LogCapture log;
    EXPECT_THAT(log, Not(Logged(line.level, line.text)));
    line.bringAbout();
    EXPECT_THAT(log, Logged(line.level, line.text));
  }
}

TEST_F(DataSubscriptionManagerTest, SkipsNobodysEntryAlongWithNobodyExcluded) {
  LogCapture log;
  manager.addSubscription("/Zelv/a", nullptr, nullptr, false);
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_EQ(log.count(PCRealDebug::Warning), 0) << log.dump();
}

// What subscribers may do while they are told.

class WhileTold : public DataSubscriptionManagerTest, public ::testing::WithParamInterface<bool> {
 protected:
  void SetUp() override {
    if (GetParam()) {
      log = std::make_unique<LogCapture>();
    }
    for (int index = 0; index < 20; ++index) {
      ids.push_back(add("/Zelv/a"));
    }
    std::sort(ids.begin(), ids.end());
  }

  std::vector<GUID> told() const {
    std::vector<GUID> found;
    for (Heard const& heard : callback.heard()) {
      found.push_back(heard.id);
    }
    return found;
  }

  std::unique_ptr<LogCapture> log;
  std::vector<GUID> ids;
};

TEST_P(WhileTold, EachMayRemoveItself) {
  callback.reaction = [this](Heard const& aHeard) { manager.removeSubscription(aHeard.id); };
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_EQ(told(), ids);
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_EQ(callback.count(), ids.size());
}

TEST_P(WhileTold, OneMayRemoveThoseBehindIt) {
  callback.reaction = [this](Heard const& aHeard) {
    if (aHeard.id == ids[3]) {
      manager.removeSubscription(ids[4]);
      manager.removeSubscription(ids[19]);
    }
  };
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  ids.erase(ids.begin() + 19);
  ids.erase(ids.begin() + 4);
  EXPECT_EQ(told(), ids);
}

TEST_P(WhileTold, OneMayRemoveAll) {
  callback.reaction = [this](Heard const&) {
    for (GUID const& id : ids) {
      manager.removeSubscription(id);
    }
  };
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_EQ(callback.count(), 1U);
}

TEST_P(WhileTold, WhatIsAddedBehindIsToldToo) {
  std::vector<GUID> added;
  second.reaction = nullptr;
  callback.reaction = [&](Heard const& aHeard) {
    if (aHeard.id == ids[10]) {
      for (int index = 0; index < 30; ++index) {
        added.push_back(manager.addSubscription("/Zelv/a", &second, nullptr, false));
      }
    }
  };
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  auto const behind =
      std::count_if(added.begin(), added.end(), [this](GUID const& aId) { return aId > ids[10]; });
  EXPECT_EQ(second.count(), static_cast<std::size_t>(behind));
  EXPECT_EQ(told(), ids);
}

TEST_P(WhileTold, AChangeMayBeReportedFromWithin) {
  GUID const other = manager.addSubscription("/Zelv/b", &second, nullptr, false);
  callback.reaction = [this](Heard const&) {
    manager.notifySubscribers("/Zelv/b", "inner", nullptr);
  };
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_EQ(told(), ids);
  EXPECT_THAT(second.heardOf(other), SizeIs(20));
}

TEST_P(WhileTold, PlansOfManyOtherPathsMayBeMadeFromWithin) {
  callback.reaction = [this](Heard const&) {
    for (int index = 0; index < 40; ++index) {
      manager.notifySubscribers("/Zelv/x" + std::to_string(index), "inner", nullptr);
    }
    manager.addSubscription("/Zelv/c", &second, nullptr, false);
    manager.notifySubscribers("/Zelv/c", "inner", nullptr);
  };
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_EQ(told(), ids);
}

TEST_P(WhileTold, OneThatThrowsKeepsNobodyFromHearing) {
  LogCapture own;
  callback.reaction = [this](Heard const& aHeard) {
    if (aHeard.id == ids[2]) {
      throw std::runtime_error("no time");
    }
    if (aHeard.id == ids[5]) {
      throw 5;
    }
  };
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_EQ(told(), ids);
  EXPECT_THAT(own, Logged(PCRealDebug::Error,
                          "DataSubscriptionManager::tell: Exception in a subscriber: no time"));
  EXPECT_THAT(own, Logged(PCRealDebug::Error,
                          "DataSubscriptionManager::tell: Unknown exception in a subscriber."));
}

INSTANTIATE_TEST_SUITE_P(DetailOffAndOn, WhileTold, ::testing::Bool());

// Threads.

TEST_F(DataSubscriptionManagerTest, HoldsItsLockWhileASubscriberIsTold) {
  PCSemaphore inside;
  PCSemaphore leave;
  inside.Create(0);
  leave.Create(0);
  GUID const id = add("/Zelv/a");
  callback.reaction = [&](Heard const&) {
    inside.Give();
    leave.Take();
  };
  std::atomic<bool> removed{false};
  {
    Elsewhere reporter([&] { manager.notifySubscribers("/Zelv/a", "new", nullptr); });
    inside.Take();
    Elsewhere remover([&] {
      manager.removeSubscription(id);
      removed = true;
    });
    // Whatever the remover has done by now, it cannot be past the one who is being told.
    EXPECT_FALSE(removed);
    leave.Give();
  }
  EXPECT_TRUE(removed);
}

TEST_F(DataSubscriptionManagerTest, TakesReportsAndChangesOfTheTableFromManyThreads) {
  std::vector<std::unique_ptr<Elsewhere>> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.push_back(std::make_unique<Elsewhere>([this] {
      for (int round = 0; round < 200; ++round) {
        GUID const id = add("/Zelv/a");
        manager.notifySubscribers("/Zelv/a", "new", nullptr);
        manager.removeSubscription(id);
      }
    }));
  }
  threads.clear();
  EXPECT_GE(callback.count(), 800U);
}

TEST_F(DataSubscriptionManagerTest, CanBeHeldForStepsThatBelongTogether) {
  manager.lock();
  std::atomic<bool> added{false};
  {
    Elsewhere other([&] {
      add("/Zelv/a");
      added = true;
    });
    manager.notifySubscribers("/Zelv/a", "new", nullptr);
    EXPECT_FALSE(added);
    manager.unlock();
  }
  EXPECT_TRUE(added);
  EXPECT_THAT(callback.heard(), IsEmpty());
}

}  // namespace
}  // namespace Zelv::Controller
