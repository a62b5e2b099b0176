#include "apps/zelv-tv/EventQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <thread>

namespace ZelvTv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

bool isReadable(EventQueue const& aQueue) {
  pollfd descriptor{aQueue.Descriptor(), POLLIN, 0};
  return ::poll(&descriptor, 1, 0) == 1;
}

TEST(EventQueue, GivesLinesInTheOrderOfTheirArrival) {
  EventQueue queue;
  queue.Post("a");
  queue.Post("b");
  EXPECT_THAT(queue.Take(), ElementsAre("a", "b"));
  EXPECT_THAT(queue.Take(), IsEmpty());
}

TEST(EventQueue, IsReadableExactlyWhileThereIsSomethingToSee) {
  EventQueue queue;
  EXPECT_FALSE(isReadable(queue));
  queue.Post("a");
  EXPECT_TRUE(isReadable(queue));
  queue.Take();
  EXPECT_FALSE(isReadable(queue));
  queue.Wake();
  EXPECT_TRUE(isReadable(queue));
  EXPECT_THAT(queue.Take(), IsEmpty());
  EXPECT_FALSE(isReadable(queue));
}

TEST(EventQueue, DropsTheNewestLinesBeyondItsBoundAndCountsThem) {
  std::string const half(EventQueue::kMaximumBytes / 2 - sizeof(std::string), 'x');
  EventQueue queue;
  queue.Post(half);
  queue.Post(half);
  queue.Post("one");
  queue.Post("two");
  EXPECT_THAT(queue.Take(), ElementsAre(half, half, "lost 2"));
  queue.Post("three");
  EXPECT_THAT(queue.Take(), ElementsAre("three"));
}

TEST(EventQueue, LosesNothingOfSeveralThreads) {
  EventQueue queue;
  std::thread other([&queue] {
    for (int i = 0; i < 1000; ++i) {
      queue.Post("other");
    }
  });
  std::size_t count = 0;
  for (int i = 0; i < 1000; ++i) {
    queue.Post("own");
    count += queue.Take().size();
  }
  other.join();
  EXPECT_EQ(count + queue.Take().size(), 2000U);
}

}  // namespace
}  // namespace ZelvTv
