#include "zelv/controller/DataTasks.h"

#include <gmock/gmock.h>

#include <memory>
#include <vector>

#include "zelv/controller/ForOthers.h"

namespace {

using testing::ElementsAre;
using Zelv::GUID;
using Zelv::Controller::DataControllerTask;
using Zelv::Controller::DataTasks;
using Zelv::Controller::ForOthers;

class Numbered : public DataControllerTask {
 public:
  Numbered(int aNumber, std::vector<int>& aDone)
      : DataControllerTask(nullptr, GUID::nullGUID), mNumber(aNumber), mDone(aDone) {}
  void execute() override { mDone.push_back(mNumber); }

 private:
  int const mNumber;
  std::vector<int>& mDone;
};

class Tasks : public testing::Test {
 protected:
  static constexpr int cMost = static_cast<int>(DataTasks::cMostAhead);

  void own(int aNumber) { push(aNumber, false); }
  void others(int aFirst, int aCount) {
    for (int i = 0; i < aCount; ++i) {
      push(aFirst + i, true);
    }
  }

  std::vector<int> run(int aCount) {
    done.clear();
    for (int i = 0; i < aCount; ++i) {
      auto const task = tasks.take();
      if (task) {
        task->execute();
      }
    }
    return done;
  }

  DataTasks tasks;

 private:
  void push(int aNumber, bool aForOthers) {
    tasks.push(std::make_unique<Numbered>(aNumber, done), aForOthers);
  }

  std::vector<int> done;
};

TEST_F(Tasks, AreTakenInTheOrderOfComingWhoeverTheyAreFor) {
  own(1);
  others(2, 2);
  own(4);
  others(5, 1);
  own(6);
  EXPECT_EQ(6U, tasks.size());
  EXPECT_THAT(run(7), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(0U, tasks.size());
}

TEST_F(Tasks, KeepTheirOrderBehindAsManyOfOthersAsADeviceMayHaveWaiting) {
  others(1, cMost);
  own(-1);
  EXPECT_EQ(-1, run(cMost + 1).back());
}

TEST_F(Tasks, TakeTurnsWhenOthersHaveMoreWaiting) {
  others(1, cMost + 3);
  own(-1);
  own(-2);
  own(-3);
  own(-4);
  // Until there are few enough again, for whose end the last one waits.
  std::vector<int> const begin = run(6);
  EXPECT_THAT(begin, ElementsAre(-1, 1, -2, 2, -3, 3));
  EXPECT_EQ(-4, run(cMost + 1).back());
}

TEST_F(Tasks, OfOthersGoOnHoweverManyOwnOnesCome) {
  others(1, cMost + 2);
  for (int i = 0; i < 10; ++i) {
    own(-1 - i);
  }
  EXPECT_THAT(run(4), ElementsAre(-1, 1, -2, 2));
}

TEST_F(Tasks, GoWithoutHavingRun) {
  own(1);
  others(2, 1);
  tasks.clear();
  EXPECT_EQ(0U, tasks.size());
  EXPECT_EQ(nullptr, tasks.take());
}

TEST(AskingForOthers, LastsAsLongAsItsScope) {
  EXPECT_FALSE(ForOthers::isActive());
  {
    ForOthers const outer;
    { ForOthers const inner; }
    EXPECT_TRUE(ForOthers::isActive());
  }
  EXPECT_FALSE(ForOthers::isActive());
}

}  // namespace
