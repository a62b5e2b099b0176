#include "zelv/controller/CommandTasks.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using Zelv::GUID;
using Zelv::Controller::CommandControllerTask;
using Zelv::Controller::CommandTasks;

class Task : public CommandControllerTask {
 public:
  explicit Task(std::string const& aText) : CommandControllerTask(nullptr, GUID::nullGUID, aText) {}
  void execute() override {}
};

std::unique_ptr<Task> task(std::string const& aText = "text") {
  return std::make_unique<Task>(aText);
}

TEST(CommandTasks, ComeOutInTheOrderOfGoingIn) {
  CommandTasks tasks;
  EXPECT_EQ(nullptr, tasks.take());
  tasks.push(task("1"));
  EXPECT_TRUE(tasks.pushFromNetwork(task("2")));
  tasks.push(task("3"));
  EXPECT_EQ(3U, tasks.size());
  for (char const* text : {"1", "2", "3"}) {
    EXPECT_EQ(text, tasks.take()->getText());
  }
  EXPECT_EQ(nullptr, tasks.take());
}

TEST(CommandTasks, AreBoundedWhenTheNetworkMakesThem) {
  CommandTasks tasks;
  for (std::size_t i = 0; i < CommandTasks::MaxFromNetwork; ++i) {
    ASSERT_TRUE(tasks.pushFromNetwork(task()));
  }
  EXPECT_FALSE(tasks.pushFromNetwork(task()));
  tasks.push(task());
  EXPECT_EQ(CommandTasks::MaxFromNetwork + 1, tasks.size());
  tasks.take();
  EXPECT_TRUE(tasks.pushFromNetwork(task()));
  EXPECT_FALSE(tasks.pushFromNetwork(task()));
}

TEST(CommandTasks, AreBoundedInSizeWhenTheNetworkMakesThem) {
  CommandTasks tasks;
  std::string const half(CommandTasks::MaxBytesFromNetwork / 2, 'x');
  EXPECT_TRUE(tasks.pushFromNetwork(task(half)));
  tasks.push(task(half));
  EXPECT_TRUE(tasks.pushFromNetwork(task(half)));
  EXPECT_FALSE(tasks.pushFromNetwork(task("x")));
  tasks.take();
  EXPECT_TRUE(tasks.pushFromNetwork(task("x")));
  tasks.clear();
  EXPECT_EQ(0U, tasks.size());
  EXPECT_TRUE(tasks.pushFromNetwork(task(half + half)));
}

}  // namespace
