#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "zelv/core/Core.h"
#include "zelv/core/testing/Component.h"
#include "zelv/core/testing/Listener.h"
#include "zelv/core/testing/SmallSet.h"
#include "zelv/platform/fake/FakeClock.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeClock;
using Testing::Component;
using Testing::SmallSet;

/// Lets time pass while it is deleted, as a component does that waits there for its own end.
class LingeringComponent : public Component {
 public:
  using Component::Component;
  ~LingeringComponent() override { FakeClock::Advance(1000); }
};

TEST(CoreStop, NoTimerGoesOffForAComponentThatWasNotToldToEnd) {
  SmallSet set;
  Testing::Listener listener;
  std::vector<Testing::Command> commands;
  Core* const core = SmallSet::start();
  ASSERT_NE(core, nullptr) << set.log.dump();
  core->registerComponent("A", new Component("A", commands, [](eLifetimeCommand) {
                            throw std::runtime_error("will not end");
                          }));
  core->registerComponent("B", new LingeringComponent("B", commands));
  GUID const timer = core->createTimer(100, -1, "of B", &listener);
  EXPECT_THROW(InterfaceFactory::terminate(), std::runtime_error);
  ASSERT_EQ(commands.size(), 1U) << "B was told to end after all";
  EXPECT_TRUE(listener.of(timer).empty());
  EXPECT_EQ(Core::requestCore(), nullptr);
}

}  // namespace
}  // namespace Zelv
