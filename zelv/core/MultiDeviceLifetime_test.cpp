// The device branch in its lifetime.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "zelv/core/testing/MultiDeviceStart.h"

namespace Zelv {
namespace {

using Testing::MultiDeviceStart;

struct Step {
  std::vector<int> before;
  int command;
  int state;
  bool initialises;
  bool registers;
  bool terminates;
};

void PrintTo(Step const& aStep, std::ostream* aStream) {
  for (int const command : aStep.before) {
    *aStream << command;
  }
  *aStream << " then " << aStep.command;
}

class MultiDeviceLifetime : public MultiDeviceStart, public ::testing::WithParamInterface<Step> {
 protected:
  void command(int aCommand) {
    device->onLifetime(static_cast<eLifetimeCommand>(aCommand), GUID::createGUID());
  }

  int count(char const* aName) {
    return set.log.count(PCRealDebug::Trace, std::string(aName) + ": Entry.");
  }
};

TEST_P(MultiDeviceLifetime, ChangesStateAndActsAsTheTableSays) {
  start();
  make();
  for (int const before : GetParam().before) {
    command(before);
  }
  set.log.clear();
  if (GetParam().command == LIFETIME_START) {
    // A branch is registered once; where it is already, the tree refuses.
    core->unregisterDataProvider("/Zelv/Devices");
  }
  command(GetParam().command);
  EXPECT_EQ(device->getLifetimeState(), GetParam().state);
  EXPECT_EQ(count("MultiDevice::initialize"), GetParam().initialises ? 1 : 0);
  EXPECT_EQ(count("DataController::registerDataProvider"), GetParam().registers ? 1 : 0);
  EXPECT_EQ(count("MultiDevice::terminate"), GetParam().terminates ? 1 : 0);
  core->unregisterDataProvider("/Zelv/Devices");
}

INSTANTIATE_TEST_SUITE_P(
    Table, MultiDeviceLifetime,
    ::testing::Values(
        Step{{}, 0, 1, true, false, false}, Step{{}, 1, 0, false, false, false},
        Step{{}, 2, 0, false, false, false}, Step{{}, 3, 0, false, false, true},
        Step{{0}, 0, 1, true, false, false}, Step{{0}, 1, 2, false, true, false},
        Step{{0}, 2, 1, false, false, false}, Step{{0}, 3, 3, false, false, true},
        Step{{0, 1}, 0, 2, true, false, false}, Step{{0, 1}, 1, 2, false, true, false},
        Step{{0, 1}, 2, 1, false, false, false}, Step{{0, 1}, 3, 3, false, false, true},
        Step{{0, 3}, 0, 3, true, false, false}, Step{{0, 3}, 1, 3, false, true, false},
        Step{{0, 3}, 2, 3, false, false, false}, Step{{0, 3}, 3, 3, false, false, true}));

TEST_F(MultiDeviceStart, ASetThatIsStoppedStillServesItsBranch) {
  start();
  device->onLifetime(LIFETIME_STOP, GUID::nullGUID);
  EXPECT_EQ(ask(cNamePath), "Mine");
  device->onLifetime(LIFETIME_TERMINATE, GUID::nullGUID);
  EXPECT_EQ(ask(cNamePath), "failed");
}

}  // namespace
}  // namespace Zelv
