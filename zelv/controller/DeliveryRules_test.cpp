// Who hears of a change, for thousands of tables and changes, held against the plain model.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "zelv/controller/testing/DeliveryModel.h"
#include "zelv/controller/testing/DeliveryTrial.h"

namespace Zelv::Controller {
namespace {

using Testing::DeliveryModel;
using Testing::DeliveryTrial;
using Events = DeliveryModel::Events;

char const cDevice[] = "2cb63c08-01e0-41cd-950e-1566f18e0983";
char const cOther[] = "ef9fb54f-92e4-4827-b1af-f61925e2fd79";
constexpr std::size_t cSubscribers = 4;

/// Paths that meet each other often: few names, few predicates, every kind of end.
class Paths {
 public:
  explicit Paths(unsigned aSeed) : mRandom(aSeed) {}

  std::size_t below(std::size_t aBound) { return mRandom() % aBound; }

  std::string any() {
    std::string path = root();
    for (std::size_t steps = below(4); steps > 0; --steps) {
      path += pick({"/a", "/a", "/b", "/Users", "/User", "/ab"}) + predicate();
    }
    path += pick({"", "", "/text()", "/text()", "/@ID", "/@x", "/", "/@", "/node()"});
    return below(20) == 0 ? damaged(path) : path;
  }

  std::string pick(std::vector<std::string> const& aTexts) { return aTexts[below(aTexts.size())]; }

 private:
  std::string root() {
    return pick({"/Zelv", "/Zelv", "/Zelv", "/Zelv", "/Zelv", "/Zelv", "/ZelvOld", "Zelv", "",
                 std::string("/Zelv[@DeviceId='") + cDevice + "']",
                 std::string("/Zelv[@DeviceId=\"") + cDevice + "\"]",
                 std::string("/Zelv[@DeviceId='") + cOther + "']",
                 "/Zelv[@DeviceId='00000000-0000-0000-0000-000000000000']", "/Zelv[@DeviceId='']",
                 "/Zelv[@ID='1']"});
  }

  std::string predicate() {
    return pick({"", "", "", "", "[@ID='1']", "[@ID='1']", "[@ID='2']", "[@IDENT='1']", "[@X='1']",
                 "[@X='2']", "[Name='a/b']", "[1]", "[]", "[", "]", "[@ID='1'][@ID='2']"});
  }

  std::string damaged(std::string aPath) {
    std::size_t const at = below(aPath.size() + 1);
    switch (below(3)) {
      case 0:
        return aPath.substr(0, at);
      case 1:
        return aPath.insert(at, pick({"[", "]", "/", "'", "\n", "/@", "/text()", "\xff"}));
      default:
        return aPath.substr(at);
    }
  }

  std::mt19937 mRandom;
};

class DeliveryRules : public ::testing::TestWithParam<unsigned> {
 protected:
  Paths paths{GetParam()};

  void fill(DeliveryTrial& aTrial, std::size_t aCount) {
    for (; aCount > 0; --aCount) {
      aTrial.add(paths.any(), paths.below(cSubscribers + 1), paths.below(8) == 0);
    }
  }

  /// Often the path of a subscription, or a part of it, so that exact matches are no rarity.
  std::string changedPath(DeliveryTrial const& aTrial) {
    if (aTrial.table.empty() || paths.below(3) != 0) {
      return paths.any();
    }
    std::string const path = aTrial.table[paths.below(aTrial.table.size())].path;
    return paths.below(2) == 0 ? path : path.substr(0, paths.below(path.size() + 1));
  }
};

/// The reads among the events, each answered: what their subscribers are then told.
Events answersOf(DeliveryTrial const& aTrial, DeliveryModel::Change const& aChange,
                 std::string const& aValue) {
  auto table = aTrial.table;
  std::sort(table.begin(), table.end(), [](auto const& a, auto const& b) { return a.id < b.id; });
  Events events;
  if (!aChange.path.starts_with("/Zelv")) {
    return events;
  }
  for (auto const& subscription : table) {
    if (DeliveryModel::one(subscription, aTrial.device, aChange).size() == 2) {
      events.push_back(
          subscription.subscriber == 0
              ? "DataSubscriptionManager::notifySubscriber: Found NULL IBaseDataCallback "
                "pointer!!!."
              : DeliveryModel::told(subscription, aValue));
    }
  }
  return events;
}

/// An event without what changes from one to the next.
std::string kindOf(std::string const& aEvent) {
  bool const logged = aEvent.starts_with("DataSubscriptionManager::");
  return aEvent.substr(0, aEvent.find(logged ? "'" : " "));
}

TEST_P(DeliveryRules, TellSkipAndLogWhatTheModelSays) {
  std::set<std::string> kinds;
  for (int table = 0; table < 60; ++table) {
    DeliveryTrial trial(cSubscribers, paths.below(4) == 0 ? "" : cDevice);
    fill(trial, paths.below(13));
    for (int change = 0; change < 12; ++change) {
      DeliveryModel::Change const now{changedPath(trial), "v" + std::to_string(change),
                                      paths.below(cSubscribers + 1)};
      Events const expected = DeliveryModel::run(trial.table, trial.device, now);
      ASSERT_EQ(trial.notify(now, true), expected) << now.path;
      ASSERT_EQ(trial.answer("read"), answersOf(trial, now, "read")) << now.path;
      for (auto const& event : expected) {
        kinds.insert(kindOf(event));
      }
    }
  }
  // Nothing that can be seen was left untried: nine lines of the log, the told, and the reads.
  EXPECT_EQ(kinds.size(), 11U) << ::testing::PrintToString(kinds);
}

TEST_P(DeliveryRules, TellTheSameWhenNobodyListensToTheLog) {
  for (int table = 0; table < 60; ++table) {
    DeliveryTrial trial(cSubscribers, paths.below(4) == 0 ? "" : cDevice);
    fill(trial, paths.below(13));
    for (int change = 0; change < 12; ++change) {
      DeliveryModel::Change const now{changedPath(trial), "v", paths.below(cSubscribers + 1)};
      Events const expected =
          DeliveryModel::quiet(DeliveryModel::run(trial.table, trial.device, now));
      ASSERT_EQ(trial.notify(now, false), expected) << "the first time: " << now.path;
      ASSERT_EQ(trial.notify(now, false), expected) << "again: " << now.path;
      trial.answer("read");
    }
  }
}

TEST_P(DeliveryRules, FollowTheTableAsItGrowsAndShrinks) {
  DeliveryTrial trial(cSubscribers, cDevice);
  std::vector<std::string> changes;
  for (int index = 0; index < 6; ++index) {
    changes.push_back("/Zelv/" + paths.pick({"a", "b"}) + paths.pick({"", "/text()", "/@ID"}));
  }
  for (int step = 0; step < 600; ++step) {
    if (paths.below(3) == 0 || trial.table.empty()) {
      trial.add(paths.below(2) == 0 ? paths.pick(changes) : paths.any(),
                paths.below(cSubscribers + 1), paths.below(8) == 0);
    } else if (paths.below(4) == 0) {
      trial.remove(trial.table[paths.below(trial.table.size())].id);
    }
    DeliveryModel::Change const now{paths.pick(changes), "v", paths.below(cSubscribers + 1)};
    ASSERT_EQ(trial.notify(now, false),
              DeliveryModel::quiet(DeliveryModel::run(trial.table, trial.device, now)))
        << now.path;
    trial.answer("read");
  }
}

/// Subscribers that add and remove entries while they are told. The model goes on from the id that
/// was told last, in the table as it then is.
TEST_P(DeliveryRules, SeeWhatSubscribersDoToTheTableMeanwhile) {
  for (int table = 0; table < 120; ++table) {
    bool const detail = paths.below(2) == 0;
    DeliveryTrial trial(cSubscribers, cDevice);
    std::string const path = "/Zelv/a/@ID";
    for (std::size_t count = paths.below(12); count > 0; --count) {
      trial.add(paths.below(3) == 0 ? paths.any() : path, paths.below(cSubscribers + 1), false);
    }
    DeliveryModel::Change const now{path, "v", paths.below(cSubscribers + 1)};
    Events expected;
    std::string from;
    auto const goOn = [&](std::string const& aUpTo) {
      auto rest = trial.table;
      std::erase_if(rest, [&](auto const& aEntry) {
        return aEntry.id <= from || (!aUpTo.empty() && aEntry.id > aUpTo);
      });
      Events const more = DeliveryModel::run(rest, trial.device, now);
      expected.insert(expected.end(), more.begin(), more.end());
      from = aUpTo;
    };
    int added = 0;
    trial.whenTold = [&](std::string const& aId) {
      goOn(aId);
      if (paths.below(2) == 0 && ++added < 20) {
        trial.add(path, paths.below(cSubscribers + 1), paths.below(6) == 0);
      }
      if (paths.below(2) == 0) {
        trial.remove(aId);
      }
      if (paths.below(3) == 0 && !trial.table.empty()) {
        trial.remove(trial.table[paths.below(trial.table.size())].id);
      }
    };
    Events const seen = trial.notify(now, detail);
    goOn("");
    // Once the table has changed the rules are gone through one by one, which says what a plan does
    // not; without anybody listening to the log there is no difference.
    ASSERT_EQ(seen, detail ? expected : DeliveryModel::quiet(expected));
    trial.whenTold = nullptr;
    trial.answer("read");
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, DeliveryRules, ::testing::Range(1U, 9U));

}  // namespace
}  // namespace Zelv::Controller
