#include "zelv/controller/DeviceServiceQueue.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "zelv/controller/testing/Phone.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeSockets.h"
#include "zelv/platform/fake/FakeThreads.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace {

using testing::ElementsAre;
using Zelv::Adapter::NetworkAdapter;
using Zelv::Controller::DeviceServiceQueue;
using Zelv::Controller::Testing::Phone;
using Zelv::Infrastructure::URL;
using Zelv::Platform::Fake::FakeSockets;
using Zelv::Platform::Fake::FakeThreads;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Fake::Logged;
using Zelv::Platform::Fake::ResetFakes;
using Zelv::Testing::Peer;

class Queue : public testing::Test {
 protected:
  using Owned = std::unique_ptr<DeviceServiceQueue>;

  Queue() : mAdapter(NetworkAdapter::getInstance()) { ResetFakes(); }
  ~Queue() override { ResetFakes(); }

  static Owned to(std::string const& aUrl) {
    auto queue = std::make_unique<DeviceServiceQueue>();
    EXPECT_TRUE(queue->initialize(URL(aUrl), "phone"));
    return queue;
  }

  static std::string nobody() {
    return "tcp://127.0.0.1:" + std::to_string(Peer::freePort(Peer::Stream)) + "/";
  }

  /// Waits, bounded, for something that the queue's thread counts.
  template <typename Condition>
  static bool comes(Condition aCondition) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!aCondition() && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
    }
    return aCondition();
  }

  static bool done(DeviceServiceQueue const& aQueue, std::uint64_t aTexts) {
    return comes([&] {
      auto const counters = aQueue.getCounters();
      return counters.sent + counters.dropped >= aTexts;
    });
  }

  static std::string attempts(DeviceServiceQueue const& aQueue, int aCount) {
    return "DeviceServiceQueue::Thread ID=" + std::to_string(aQueue.getThreadID()) +
           " Sending Command: Attempt " + std::to_string(aCount) + ".";
  }

  /// Its ports are free for sure, and nobody takes one between two looks at it.
  Zelv::Platform::Fake::OwnNetwork mNetwork;
  std::unique_ptr<NetworkAdapter> mAdapter;
};

TEST_F(Queue, SendsEachTextOnceInTheOrderOfPosting) {
  Phone phone;
  Owned const queue = to(phone.url());
  constexpr std::size_t count = 10000;
  for (std::size_t i = 0; i < count; ++i) {
    ASSERT_TRUE(queue->postCommand("<n>" + std::to_string(i) + "</n>"));
  }
  ASSERT_TRUE(done(*queue, count));
  std::vector<std::string> const texts = phone.texts();
  ASSERT_EQ(count, texts.size());
  for (std::size_t i = 0; i < count; ++i) {
    ASSERT_EQ("<n>" + std::to_string(i) + "</n>\n", texts[i]);
  }
  EXPECT_EQ(count, queue->getCounters().sent);
  EXPECT_EQ(count, queue->getCounters().attempts);
  EXPECT_EQ(0U, queue->getCounters().dropped);
}

TEST_F(Queue, SendsTheTextsOfEachOfManyPostersInTheirOrder) {
  Phone phone;
  Owned const queue = to(phone.url());
  constexpr int posters = 4;
  constexpr int each = 100;
  std::vector<std::thread> threads;
  for (int who = 0; who < posters; ++who) {
    threads.emplace_back([&queue, who] {
      for (int i = 0; i < each; ++i) {
        queue->postCommand(std::to_string(who) + " " + std::to_string(i));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  ASSERT_TRUE(phone.waitFor(posters * each));
  std::vector<int> next(posters, 0);
  for (std::string const& text : phone.texts()) {
    int const who = text[0] - '0';
    EXPECT_EQ(
        std::to_string(who) + " " + std::to_string(next[static_cast<std::size_t>(who)]++) + "\n",
        text);
  }
}

TEST_F(Queue, TriesEachTextThreeTimesWhenNobodyIsThere) {
  LogCapture const log;
  Owned const queue = to(nobody());
  queue->postCommand("one");
  queue->postCommand("two");
  ASSERT_TRUE(done(*queue, 2));
  EXPECT_EQ(6, FakeSockets::Count(FakeSockets::Connect));
  EXPECT_THAT(log.texts(PCRealDebug::Warning),
              ElementsAre(attempts(*queue, 0), attempts(*queue, 1), attempts(*queue, 2),
                          attempts(*queue, 0), attempts(*queue, 1), attempts(*queue, 2)));
  auto const counters = queue->getCounters();
  EXPECT_EQ(6U, counters.attempts);
  EXPECT_EQ(0U, counters.sent);
  EXPECT_EQ(2U, counters.dropped);
}

TEST_F(Queue, LogsAlsoTheOnlyAttemptAtWarningLevel) {
  LogCapture const log;
  Phone phone;
  Owned const queue = to(phone.url());
  queue->postCommand("one");
  ASSERT_TRUE(done(*queue, 1));
  EXPECT_THAT(log.texts(PCRealDebug::Warning), ElementsAre(attempts(*queue, 0)));
}

TEST_F(Queue, TriesEachLaterTextThreeTimesWhenThePeerGoesAway) {
  Phone phone;
  Owned const queue = to(phone.url());
  for (int i = 0; i < 20; ++i) {
    queue->postCommand("before");
  }
  ASSERT_TRUE(done(*queue, 20));
  phone.leave();
  for (int i = 0; i < 20; ++i) {
    queue->postCommand("after");
  }
  ASSERT_TRUE(done(*queue, 40));
  EXPECT_EQ(20U + 3U * 20U, queue->getCounters().attempts);
  EXPECT_EQ(20U, queue->getCounters().sent);
  EXPECT_EQ(20U, phone.texts().size());
}

TEST_F(Queue, SendsAgainToAPeerThatCameBack) {
  auto const port = Peer::freePort(Peer::Stream);
  Owned const queue = to("tcp://127.0.0.1:" + std::to_string(port) + "/");
  queue->postCommand("lost");
  ASSERT_TRUE(done(*queue, 1));
  Phone phone(Phone::Acknowledges, port);
  queue->postCommand("found");
  ASSERT_TRUE(phone.waitFor(1));
  EXPECT_THAT(phone.texts(), ElementsAre("found\n"));
}

TEST_F(Queue, TakesAWrongAcknowledgementForSuccess) {
  Phone phone(Phone::AcknowledgesWrongly);
  Owned const queue = to(phone.url());
  queue->postCommand("one");
  queue->postCommand("two");
  ASSERT_TRUE(done(*queue, 2));
  EXPECT_THAT(phone.texts(), ElementsAre("one\n", "two\n"));
  EXPECT_EQ(2U, queue->getCounters().attempts);
}

TEST_F(Queue, TakesTheEndOfTheConnectionForSuccess) {
  Phone phone(Phone::HangsUp);
  Owned const queue = to(phone.url());
  queue->postCommand("one");
  ASSERT_TRUE(done(*queue, 1));
  EXPECT_THAT(phone.texts(), ElementsAre("one\n"));
  EXPECT_EQ(1U, queue->getCounters().attempts);
}

TEST_F(Queue, SendsNothingThatIsQueuedWhenItIsTerminated) {
  Phone phone(Phone::KeepsSilent);
  Owned queue = to(phone.url());
  queue->postCommand("under way");
  ASSERT_TRUE(phone.waitFor(1));
  for (int i = 0; i < 10; ++i) {
    queue->postCommand("queued");
  }
  auto const start = std::chrono::steady_clock::now();
  EXPECT_TRUE(queue->terminate());
  EXPECT_TRUE(queue->isTerminated());
  ASSERT_TRUE(done(*queue, 11));
  EXPECT_EQ(11U, queue->getCounters().dropped);
  EXPECT_EQ(0U, queue->getCounters().length);
  EXPECT_EQ(0U, queue->getCounters().bytes);
  EXPECT_EQ(1U, queue->getCounters().attempts);
  queue.reset();
  // The acknowledgement alone would have been waited for three times 3 seconds.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
  EXPECT_THAT(phone.texts(), ElementsAre("under way\n"));
}

TEST_F(Queue, MayBeTerminatedAgainAndBeforeItWasStarted) {
  Phone phone;
  {
    DeviceServiceQueue queue;
    EXPECT_TRUE(queue.terminate());
    EXPECT_TRUE(queue.terminate());
    EXPECT_TRUE(queue.initialize(URL(phone.url()), ""));
    EXPECT_TRUE(queue.postCommand("text"));
    EXPECT_TRUE(done(queue, 1));
    EXPECT_EQ(0U, queue.getCounters().attempts);
  }
  EXPECT_TRUE(phone.texts().empty());
}

// Nobody takes it out any more, be its thread gone already or not yet.
TEST_F(Queue, CountsWhatIsPostedAfterItsEndAsDropped) {
  Phone phone;
  Owned const queue = to(phone.url());
  queue->terminate();
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(queue->postCommand("text"));
  }
  ASSERT_TRUE(done(*queue, 100));
  EXPECT_EQ(100U, queue->getCounters().dropped);
  EXPECT_EQ(0U, queue->getCounters().length);
  EXPECT_EQ(0U, queue->getCounters().bytes);
  EXPECT_EQ(0U, queue->getCounters().attempts);
  EXPECT_FALSE(queue->postCommand(""));
}

TEST_F(Queue, EndsThoughNobodyTerminatedIt) {
  Phone phone(Phone::KeepsSilent);
  Owned queue = to(phone.url());
  queue->postCommand("text");
  ASSERT_TRUE(phone.waitFor(1));
  queue.reset();
  EXPECT_EQ(1U, phone.texts().size());
}

TEST_F(Queue, RefusesAnEmptyTextAndStaysAsItIs) {
  Phone phone(Phone::KeepsSilent);
  Owned const queue = to(phone.url());
  queue->postCommand("under way");
  ASSERT_TRUE(phone.waitFor(1));
  queue->postCommand("queued");
  LogCapture const log;
  EXPECT_FALSE(queue->postCommand(""));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "DeviceServiceQueue::postCommand: Command String is empty!!!!"));
  EXPECT_EQ(1U, queue->getCounters().length);
  EXPECT_EQ("queued", queue->dequeueCommand());
  EXPECT_EQ("", queue->dequeueCommand());
}

TEST_F(Queue, GoesOnWhenATextWasTakenAway) {
  Phone phone(Phone::KeepsSilent);
  Owned const queue = to(phone.url());
  queue->postCommand("under way");
  ASSERT_TRUE(phone.waitFor(1));
  queue->postCommand("taken");
  EXPECT_EQ("taken", queue->dequeueCommand());
  phone.goOn();
  queue->postCommand("later");
  ASSERT_TRUE(phone.waitFor(2));
  EXPECT_THAT(phone.texts(), ElementsAre("under way\n", "later\n"));
}

TEST_F(Queue, DropsTheOldestBeyondItsMostTexts) {
  Phone phone(Phone::KeepsSilent);
  Owned const queue = to(phone.url());
  queue->postCommand("under way");
  ASSERT_TRUE(phone.waitFor(1));
  LogCapture const log;
  for (std::size_t i = 0; i < DeviceServiceQueue::MaxTexts; ++i) {
    ASSERT_TRUE(queue->postCommand(std::to_string(i)));
  }
  EXPECT_EQ(DeviceServiceQueue::MaxTexts, queue->getCounters().length);
  EXPECT_EQ(0U, queue->getCounters().dropped);
  EXPECT_TRUE(queue->postCommand("one more"));
  EXPECT_EQ(DeviceServiceQueue::MaxTexts, queue->getCounters().length);
  EXPECT_EQ(1U, queue->getCounters().dropped);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "DeviceServiceQueue::postCommand: Too much waits for device 'phone', "
                          "dropped the 1 oldest."));
  phone.goOn();
  ASSERT_TRUE(phone.waitFor(1 + DeviceServiceQueue::MaxTexts));
  EXPECT_EQ("1\n", phone.texts()[1]);
  EXPECT_EQ("one more\n", phone.texts().back());
}

TEST_F(Queue, DropsTheOldestBeyondFourMebibytesButNeverTheNewest) {
  Phone phone(Phone::KeepsSilent);
  Owned const queue = to(phone.url());
  queue->postCommand("under way");
  ASSERT_TRUE(phone.waitFor(1));
  std::string const half(DeviceServiceQueue::MaxBytes / 2, 'x');
  queue->postCommand(half);
  queue->postCommand(half);
  EXPECT_EQ(2U, queue->getCounters().length);
  EXPECT_EQ(DeviceServiceQueue::MaxBytes, queue->getCounters().bytes);
  queue->postCommand("y");
  EXPECT_EQ(2U, queue->getCounters().length);
  EXPECT_EQ(DeviceServiceQueue::MaxBytes / 2 + 1, queue->getCounters().bytes);
  queue->postCommand(std::string(DeviceServiceQueue::MaxBytes + 1, 'z'));
  EXPECT_EQ(1U, queue->getCounters().length);
  EXPECT_EQ(3U, queue->getCounters().dropped);
}

TEST_F(Queue, TellsWhatItServesOnceItIsStarted) {
  DeviceServiceQueue queue;
  EXPECT_EQ(-1, queue.getThreadID());
  ASSERT_TRUE(queue.initialize(URL("tcp://192.0.2.7:4448/"), "the phone"));
  EXPECT_EQ(static_cast<int>(queue.GetId()), queue.getThreadID());
  EXPECT_EQ("tcp://192.0.2.7:4448/", queue.getServiceURL().toString());
  EXPECT_EQ("the phone", queue.getDeviceID());
}

/// Its thread ends at once, with a line that has its name.
class FailingQueue : public DeviceServiceQueue {
 public:
  void t_Main() override { throw std::runtime_error("failed"); }
};

TEST_F(Queue, NamesItsThread) {
  LogCapture const log;
  FailingQueue queue;
  ASSERT_TRUE(queue.initialize(URL("tcp://192.0.2.7:4448/"), "phone"));
  EXPECT_TRUE(log.waitFor(PCRealDebug::Error,
                          "PCThread::t_Main: thread 'Quorl - DeviceServiceQueue::initialize' ended "
                          "by exception 'failed'"));
}

TEST_F(Queue, DoesNotStartWithoutAThread) {
  LogCapture const log;
  FakeThreads::FailNext(1);
  DeviceServiceQueue queue;
  EXPECT_FALSE(queue.initialize(URL("tcp://192.0.2.7:4448/"), "phone"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "DeviceServiceQueue::initialize: Error creating a new thread"));
  EXPECT_EQ(-1, queue.getThreadID());
}

TEST_F(Queue, TellsOfItsEnd) {
  Phone phone;
  Owned queue = to(phone.url());
  std::string const id = std::to_string(queue->getThreadID());
  LogCapture const log;
  queue.reset();
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "DeviceServiceQueue::~DeviceServiceQueue: Entry for ID=" + id + "."));
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "DeviceServiceQueue::~DeviceServiceQueue: Exit for ID=" + id + "."));
}

TEST_F(Queue, RemembersWhenItWasLastUsed) {
  Phone phone;
  Owned const queue = to(phone.url());
  std::int64_t const before = queue->getLastActivity();
  Zelv::Platform::Fake::FakeClock::Advance(1000);
  queue->postCommand("text");
  EXPECT_EQ(before + 1000, queue->getLastActivity());
}

TEST_F(Queue, DoesNotKeepOneDeviceWaitingForAnother) {
  Phone dead(Phone::KeepsSilent);
  Phone alive;
  Owned const toDead = to(dead.url());
  Owned const toAlive = to(alive.url());
  for (int i = 0; i < 10; ++i) {
    toDead->postCommand("text");
  }
  ASSERT_TRUE(dead.waitFor(1));
  for (int i = 0; i < 100; ++i) {
    toAlive->postCommand("text");
  }
  EXPECT_TRUE(done(*toAlive, 100));
  EXPECT_EQ(0U, toDead->getCounters().sent + toDead->getCounters().dropped);
  EXPECT_EQ(9U, toDead->getCounters().length);
}

}  // namespace
