#include "zelv/interfaces/Diagnostics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "zelv/core/Core.h"
#include "zelv/core/DiscoveryService.h"
#include "zelv/core/MultiDevice.h"
#include "zelv/core/testing/DiscoveryTexts.h"
#include "zelv/core/testing/Listener.h"
#include "zelv/core/testing/SmallSet.h"
#include "zelv/platform/TestPlatform.h"
#include "zelv/platform/fake/FakeClock.h"

namespace Zelv {

/// Keeps the data worker busy until it is let go.
class Blocking : public virtual IBaseDataCallback {
 public:
  void onData(std::string const&, std::string const&, ContextInformation const*,
              GUID const&) override {
    entered.happen();
    EXPECT_TRUE(goOn.wait());
    Platform::Fake::FakeClock::Advance(250);
  }
  void onStatus(StatusInformation const&, GUID const&) override {}

  Platform::Testing::Event entered;
  Platform::Testing::Event goOn;
};

namespace {

using Platform::Fake::FakeClock;
using Statistics = Diagnostics::Statistics;
using ::testing::Contains;
using ::testing::IsEmpty;
using Testing::Listener;
using ::testing::SizeIs;
using Testing::SmallSet;

TEST(DiagnosticsWithoutASet, TellsNothingAndStartsNone) {
  EXPECT_THAT(Diagnostics::explain("/Zelv/a"), IsEmpty());
  EXPECT_FALSE(Diagnostics::statistics());
  EXPECT_EQ(Core::requestCore(), nullptr);
}

TEST(DiagnosticsWithoutASet, HasASentenceForEachRule) {
  using Rule = Diagnostics::Rule;
  std::vector<std::string> sentences;
  for (Rule const rule :
       {Rule::NoChange, Rule::RemoteData, Rule::OneTime, Rule::Excluded, Rule::SamePath,
        Rule::Sibling, Rule::Attribute, Rule::Unmatched, Rule::Nested}) {
    std::string const sentence = Diagnostics::reasonOf(rule);
    bool const told = rule == Rule::SamePath || rule == Rule::Nested;
    EXPECT_EQ(sentence.starts_with("told "), told) << sentence;
    EXPECT_EQ(sentence.starts_with("not told: "), !told) << sentence;
    EXPECT_THAT(sentences, ::testing::Not(Contains(sentence)));
    sentences.push_back(sentence);
  }
}

class DiagnosticsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    core = SmallSet::start();
    ASSERT_NE(core, nullptr) << set.log.dump();
    settle();
  }
  void TearDown() override { InterfaceFactory::terminate(); }

  /// Until all that was asked of the data worker is done.
  void settle() {
    GUID const id = core->requestData(SmallSet::cNamePath, nullptr, &listener);
    EXPECT_TRUE(listener.waitFor(id));
  }

  static Statistics statistics() {
    std::optional<Statistics> const now = Diagnostics::statistics();
    EXPECT_TRUE(now);
    return now.value_or(Statistics());
  }

  static std::optional<Diagnostics::Explanation> explained(GUID const& aId,
                                                           std::string const& aPath) {
    for (Diagnostics::Explanation const& one : Diagnostics::explain(aPath)) {
      if (one.id == aId) {
        return one;
      }
    }
    return {};
  }

  Listener listener;
  SmallSet set;
  Core* core = nullptr;
};

TEST_F(DiagnosticsTest, ExplainsEveryRuleForASubscriptionOfAnApplication) {
  using Rule = Diagnostics::Rule;
  struct Case {
    char const* subscribed;
    char const* changed;
    Rule rule;
    bool told;
  };
  for (Case const& one : {
           Case{"/Zelv/a", "/Other", Rule::NoChange, false},
           Case{"/Zelv[@DeviceId='x']/a", "/Zelv/a", Rule::RemoteData, false},
           Case{"/Zelv/a", "/Zelv/a", Rule::SamePath, true},
           Case{"/Zelv/u[@ID='a']/n", "/Zelv/u[@ID='b']/n", Rule::Sibling, false},
           Case{"/Zelv/a/@ID", "/Zelv/a/n/text()", Rule::Attribute, false},
           Case{"/Zelv/a", "/Zelv/b", Rule::Unmatched, false},
           Case{"/Zelv/a", "/Zelv/a/b", Rule::Nested, true},
       }) {
    GUID const id = core->subscribeData(one.subscribed, nullptr, &listener);
    auto const explanation = explained(id, one.changed);
    ASSERT_TRUE(explanation) << one.subscribed;
    EXPECT_EQ(explanation->rule, one.rule) << one.subscribed;
    EXPECT_EQ(explanation->told, one.told) << one.subscribed;
    EXPECT_EQ(explanation->path, one.subscribed);
    EXPECT_EQ(explanation->subscriber, "Zelv::Testing::Listener");
    EXPECT_FALSE(explanation->withheld);
    core->unsubscribeData(id);
  }
  settle();
}

TEST_F(DiagnosticsTest, ExplainsARequestAndOneThatHasNobodyToTell) {
  GUID const request = core->requestData("/Zelv[@DeviceId='x']/a", nullptr, &listener);
  EXPECT_EQ(explained(request, "/Zelv/a")->rule, Diagnostics::Rule::RemoteData);
  GUID const nobody = core->subscribeData("/Zelv/a", nullptr, nullptr);
  auto const explanation = explained(nobody, "/Zelv/a");
  EXPECT_EQ(explanation->rule, Diagnostics::Rule::Excluded);
  EXPECT_EQ(explanation->subscriber, "");
  EXPECT_FALSE(explanation->told);
  core->unsubscribeData(nobody);
  settle();
}

TEST_F(DiagnosticsTest, CountsTheTasksThatWaitBehindACallbackAndNamesIt) {
  Blocking blocking;
  core->requestData(SmallSet::cNamePath, nullptr, &blocking);
  ASSERT_TRUE(blocking.entered.wait());
  core->requestData(SmallSet::cNamePath, nullptr, &listener);
  core->requestData(SmallSet::cNamePath, nullptr, &listener);
  EXPECT_EQ(statistics().dataTasks, 2U);
  blocking.goOn.happen();
  settle();
  Statistics const now = statistics();
  EXPECT_EQ(now.dataTasks, 0U);
  EXPECT_EQ(now.longestCallback.operation, "onData");
  EXPECT_EQ(now.longestCallback.callee, "Zelv::Blocking");
  EXPECT_EQ(now.longestCallback.subject, SmallSet::cNamePath);
  EXPECT_EQ(now.longestCallback.nanoseconds, 250000000);
}

/// Takes a second for everything.
class SlowProvider : public virtual IDataProvider {
 public:
  int getData(std::string const&, std::string&, GUID) override { return slowly(); }
  int setData(std::string const&, std::string const&, GUID) override { return slowly(); }
  int addData(std::string const&, std::string const&, GUID) override { return slowly(); }
  int onSubscribe(std::string const&, GUID) override { return 0; }
  int onUnsubscribe(std::string const&, GUID) override { return 0; }

 private:
  static int slowly() {
    FakeClock::Advance(1000);
    return 0;
  }
};

TEST_F(DiagnosticsTest, NamesTheProviderThatTookLongestUntilTheSystemStartsAnew) {
  SlowProvider provider;
  core->registerDataProvider("/Zelv/Slow", &provider);
  GUID const id = core->requestData("/Zelv/Slow/a", nullptr, &listener);
  EXPECT_TRUE(listener.waitFor(id));
  Diagnostics::Call const longest = statistics().longestProviderCall;
  EXPECT_EQ(longest.operation, "getData");
  EXPECT_THAT(longest.callee, ::testing::EndsWith("SlowProvider"));
  EXPECT_EQ(longest.subject, "/Zelv/Slow/a");
  EXPECT_EQ(longest.nanoseconds, 1000000000);
  core->unregisterDataProvider("/Zelv/Slow");
  InterfaceFactory::terminate();
  core = SmallSet::start();
  ASSERT_NE(core, nullptr);
  settle();
  EXPECT_EQ(statistics().longestProviderCall.nanoseconds, 0);
}

TEST_F(DiagnosticsTest, TellsRequestsThatNeverLeftWithTheirAge) {
  GUID const id = core->requestData("/Zelv[@DeviceId='x']/a", nullptr, &listener);
  FakeClock::Advance(5000);
  settle();
  Statistics const now = statistics();
  EXPECT_EQ(now.requests, 1U);
  ASSERT_THAT(now.oldestRequests, SizeIs(1));
  EXPECT_EQ(now.oldestRequests[0].id, id);
  EXPECT_EQ(now.oldestRequests[0].path, "/Zelv[@DeviceId='x']/a");
  EXPECT_EQ(now.oldestRequests[0].age, 5000);
  EXPECT_FALSE(now.oldestRequests[0].answered);
  core->unsubscribeData(id);
  EXPECT_EQ(statistics().requests, 0U);
}

TEST_F(DiagnosticsTest, NamesTheThreadsOfTheLibrary) {
  std::vector<std::string> const names = statistics().threads;
  for (char const* name :
       {"Quorl - DataController::initialize", "Quorl - UserController::initialize"}) {
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
  }
}

TEST_F(DiagnosticsTest, TellsNoPeersOfASetWithoutDiscovery) {
  EXPECT_THAT(statistics().peers, IsEmpty());
  EXPECT_THAT(statistics().departedPeers, IsEmpty());
  EXPECT_THAT(statistics().deviceQueues, IsEmpty());
}

TEST_F(DiagnosticsTest, MayBeAskedOnManyThreadsWhileTheSetWorks) {
  std::atomic<bool> end{false};
  std::vector<std::thread> threads;
  std::atomic<int> asked{0};
  for (int thread = 0; thread < 3; ++thread) {
    threads.emplace_back([&] {
      do {
        asked += Diagnostics::statistics() ? 1 : 0;
        Diagnostics::explain("/Zelv/Devices");
      } while (!end);
    });
  }
  for (int round = 0; round < 200; ++round) {
    core->unsubscribeData(core->subscribeData(SmallSet::cNamePath, nullptr, &listener));
    core->setData(SmallSet::cNamePath, std::to_string(round), &listener, true);
  }
  settle();
  end = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_GE(asked, 3);
}

/// A set with its own discovery, which hears what the test says.
class DiagnosticsOfAHome : public DiagnosticsTest {
 protected:
  using Texts = Testing::DiscoveryTexts;

  void SetUp() override {
    set.directories.putReadOnly(
        "Configuration.xml", "<Configuration><ZelvDiscovery>true</ZelvDiscovery></Configuration>");
    DiagnosticsTest::SetUp();
    auto* const devices = dynamic_cast<Core::MultiDevice*>(core->getComponent("MultiDevice"));
    ASSERT_NE(devices, nullptr);
    discovery = devices->getDiscovery();
    ASSERT_NE(discovery, nullptr);
  }

  void hear(std::string const& aText) { discovery->onMessage(aText, aText); }

  Core::DiscoveryService* discovery = nullptr;
};

TEST_F(DiagnosticsOfAHome, TellsWhoIsThereAndWhoLeftAndWhy) {
  hear(Texts::hello("TV", "a", "Set"));
  hear(Texts::hello("MOBILE", "b", "Phone"));
  FakeClock::Advance(3000);
  Statistics now = statistics();
  ASSERT_THAT(now.peers, SizeIs(2));
  EXPECT_EQ(now.peers[0].type, "TV");
  EXPECT_EQ(now.peers[0].id, "a");
  EXPECT_EQ(now.peers[0].name, "Set");
  EXPECT_EQ(now.peers[0].age, 3);
  EXPECT_EQ(now.peers[1].type, "MOBILE");
  EXPECT_THAT(now.departedPeers, IsEmpty());
  hear(Texts::bye("b"));
  FakeClock::Advance(2000);
  now = statistics();
  EXPECT_THAT(now.peers, SizeIs(1));
  ASSERT_THAT(now.departedPeers, SizeIs(1));
  EXPECT_EQ(now.departedPeers[0].type, "MOBILE");
  EXPECT_EQ(now.departedPeers[0].id, "b");
  EXPECT_EQ(now.departedPeers[0].name, "Phone");
  EXPECT_EQ(now.departedPeers[0].age, 2);
  EXPECT_TRUE(now.departedPeers[0].saidGoodbye);
}

TEST_F(DiagnosticsOfAHome, TellsOfSilence) {
  hear(Texts::hello("TV", "a", "Set"));
  FakeClock::Advance(3600 * 1000);
  discovery->onTimer("HeartBeatTimer", GUID::nullGUID);
  Statistics const now = statistics();
  EXPECT_THAT(now.peers, IsEmpty());
  ASSERT_THAT(now.departedPeers, SizeIs(1));
  EXPECT_FALSE(now.departedPeers[0].saidGoodbye);
}

TEST_F(DiagnosticsOfAHome, TellsADeviceThatCameBackAsAPeerOnly) {
  hear(Texts::hello("TV", "a", "Set"));
  hear(Texts::bye("a"));
  hear(Texts::hello("TV", "a", "Set"));
  EXPECT_THAT(statistics().peers, SizeIs(1));
  EXPECT_THAT(statistics().departedPeers, IsEmpty());
}

}  // namespace
}  // namespace Zelv
