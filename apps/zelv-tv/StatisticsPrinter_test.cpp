#include "apps/zelv-tv/StatisticsPrinter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace ZelvTv {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Zelv::Diagnostics;
using Rule = Diagnostics::Rule;

char const kId[] = "2cb63c08-01e0-41cd-950e-1566f18e0983";

Diagnostics::Explanation explanation(Rule aRule) {
  Diagnostics::Explanation one;
  one.id = Zelv::GUID(kId);
  one.path = "/Zelv/a[b = 'c']";
  one.subscriber = "ZelvTv::TreeListener";
  one.rule = aRule;
  return one;
}

std::string explained(Diagnostics::Explanation const& aOne) {
  return StatisticsPrinter::Explain({aOne}, "/Zelv").at(0);
}

TEST(StatisticsPrinter, SaysForEachSubscriptionWhichRuleDecidesAndWhy) {
  std::string const id(kId);
  EXPECT_THAT(
      StatisticsPrinter::Explain({explanation(Rule::SamePath), explanation(Rule::Nested)},
                                 "/Zelv/a b"),
      ElementsAre("explain " + id +
                      " same-path ZelvTv::TreeListener /Zelv/a[b\\x20=\\x20'c'] told at once, "
                      "with the new value: it is on exactly this path",
                  "explain " + id +
                      " nested ZelvTv::TreeListener /Zelv/a[b\\x20=\\x20'c'] told later, with what "
                      "its own path then holds: one path lies below the other",
                  "explained 2 /Zelv/a b"));
}

TEST(StatisticsPrinter, HasAWordAndASentenceForEachRule) {
  std::vector<std::pair<Rule, std::string>> const skips = {
      {Rule::NoChange, "no-change"}, {Rule::RemoteData, "remote-data"},
      {Rule::OneTime, "one-time"},   {Rule::Excluded, "excluded"},
      {Rule::Sibling, "sibling"},    {Rule::Attribute, "attribute"},
      {Rule::Unmatched, "unmatched"}};
  for (auto const& [rule, word] : skips) {
    std::string const line = explained(explanation(rule));
    EXPECT_THAT(line, StartsWith("explain " + std::string(kId) + " " + word + " "));
    EXPECT_THAT(line, HasSubstr(" not told: "));
  }
}

TEST(StatisticsPrinter, SaysOfAnotherDevicesSubscriptionWhatIsWithheldFromIt) {
  Diagnostics::Explanation one = explanation(Rule::SamePath);
  EXPECT_EQ(explained(one).find("another device's"), std::string::npos);
  one.withheld = true;
  EXPECT_THAT(explained(one),
              HasSubstr("; another device's, so it hears of no change that stays on this one"));
}

TEST(StatisticsPrinter, ShowsNobodyAsAnEmptyField) {
  Diagnostics::Explanation one = explanation(Rule::Excluded);
  one.subscriber = "";
  EXPECT_THAT(explained(one), HasSubstr(" excluded - /Zelv/a"));
}

TEST(StatisticsPrinter, SaysWhenNoSetRuns) {
  EXPECT_THAT(StatisticsPrinter::Statistics(std::nullopt),
              ElementsAre("error the set does not run"));
}

TEST(StatisticsPrinter, ShowsASetWithNothingToDo) {
  EXPECT_THAT(
      StatisticsPrinter::Statistics(Diagnostics::Statistics()),
      ElementsAre("queue data 0", "queue command 0", "queue input 0", "remote 0 0", "commands 0 0",
                  "longest provider 0.000 - - ", "longest callback 0.000 - - ", "requests 0",
                  "threads 0 0", "peers 0", "stats 10"));
}

TEST(StatisticsPrinter, ShowsEverythingOnALineOfItsOwn) {
  Diagnostics::Statistics statistics;
  statistics.dataTasks = 1;
  statistics.commandTasks = 2;
  statistics.inputs = 3;
  statistics.deviceQueues = {{"data", "tv b", "tcp://192.0.2.9:4446/", 4, 500, 6, 7},
                             {"command", "", "tcp://192.0.2.9:4448/", 0, 0, 0, 0}};
  statistics.remoteContexts = 8;
  statistics.remoteSubscriptions = 5;
  statistics.pendingCommands = 9;
  statistics.commandCallbacks = 10;
  statistics.longestProviderCall = {"setData", "A::Provider", "/Zelv/a b", 12345678};
  statistics.longestCallback = {"onTimer", "one of 5", "tea\ntime", 1500};
  statistics.requests = 70;
  statistics.oldestRequests = {{Zelv::GUID(kId), "/Zelv[@DeviceId='x']/a", 61250, false},
                               {Zelv::GUID(kId), "/Zelv[@DeviceId='x']/b", 5, true}};
  statistics.threads = {"b thread", "a", "b thread"};
  statistics.parkedThreads = 2;
  statistics.peers = {{"TV", "b", "Living room", 4}};
  statistics.departedPeers = {{"MOBILE", "c", "Tom's", 30, true}, {"TV", "d", "", 31, false}};
  std::string const id(kId);
  EXPECT_THAT(StatisticsPrinter::Statistics(statistics),
              ElementsAre("queue data 1", "queue command 2", "queue input 3",
                          "device-queue data tv\\x20b 4 500 6 7 tcp://192.0.2.9:4446/",
                          "device-queue command - 0 0 0 0 tcp://192.0.2.9:4448/", "remote 8 5",
                          "commands 9 10", "longest provider 12.345 setData A::Provider /Zelv/a b",
                          "longest callback 0.001 onTimer one\\x20of\\x205 tea\\ntime",
                          "request " + id + " 61.250 waiting /Zelv[@DeviceId='x']/a",
                          "request " + id + " 0.005 answered /Zelv[@DeviceId='x']/b", "requests 70",
                          "thread 1 a", "thread 2 b thread", "threads 3 2",
                          "peer TV b 4 Living room", "peers 1", "departed MOBILE c 30 bye Tom's",
                          "departed TV d 31 silence ", "stats 19"));
}

}  // namespace
}  // namespace ZelvTv
