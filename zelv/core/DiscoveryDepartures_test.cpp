// Which devices are there and which have left, as diagnostics see it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "zelv/core/testing/DiscoveryTest.h"

namespace Zelv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DiscoveryDepartures : public Testing::DiscoveryTest {
 protected:
  void SetUp() override { start(); }

  std::vector<std::string> devices() {
    std::vector<std::string> lines;
    for (RemoteDevice const& one : service->getDevices()) {
      lines.push_back(one.type + " " + one.id + " " + one.name + " " +
                      std::to_string(PCTime::EpochTime() - one.stamp));
    }
    return lines;
  }
  std::vector<std::string> departed() const {
    std::vector<std::string> lines;
    for (DepartedDevices::Entry const& one : service->getDeparted()) {
      lines.push_back(one.type + " " + one.id + " " + one.name + " " +
                      (one.reason == DepartedDevices::Reason::Bye ? "bye" : "silence") + " " +
                      std::to_string((PCTime::MonotonicMs() - one.left) / 1000));
    }
    return lines;
  }
};

TEST_F(DiscoveryDepartures, KnowsWhenADeviceWasLastHeard) {
  EXPECT_THAT(devices(), IsEmpty());
  hear(Texts::hello("MOBILE", "a", "Phone"));
  hear(Texts::hello("TV", "b", "Set"));
  pass(3);
  hear(Texts::heartBeat("b"));
  pass(1);
  EXPECT_THAT(devices(), ElementsAre("TV b Set 1", "MOBILE a Phone 4"));
  EXPECT_THAT(departed(), IsEmpty());
}

TEST_F(DiscoveryDepartures, NotesTheGoodbye) {
  hear(Texts::hello("TV", "a", "Set"));
  hear(Texts::bye("a"));
  pass(2);
  EXPECT_THAT(devices(), IsEmpty());
  EXPECT_THAT(departed(), ElementsAre("TV a Set bye 2"));
}

TEST_F(DiscoveryDepartures, NotesTheSilence) {
  hear(Texts::hello("MOBILE", "a", "Phone"));
  pass(20);
  EXPECT_THAT(devices(), IsEmpty());
  EXPECT_THAT(departed(), ElementsAre("MOBILE a Phone silence 0"));
}

TEST_F(DiscoveryDepartures, NotesNoGoodbyeOfADeviceThatWasNotThere) {
  hear(Texts::bye("a"));
  hear(Texts::bye(""));
  EXPECT_THAT(departed(), IsEmpty());
}

/// Asks when it is told of a change.
class Asking : public virtual IBaseDataCallback {
 public:
  explicit Asking(Core::DiscoveryService& aService) : mService(aService) {}

  void onData(std::string const&, std::string const&, ContextInformation const*,
              GUID const&) override {
    seen = mService.getDevices().size();
  }
  void onStatus(StatusInformation const&, GUID const&) override {}

  std::atomic<std::size_t> seen{0};

 private:
  Core::DiscoveryService& mService;
};

TEST_F(DiscoveryDepartures, MayBeAskedForFromWithinADelivery) {
  subscribe();
  Asking asking(*service);
  GUID const id = core->subscribeData(cTelevisions, nullptr, &asking);
  hear(Texts::hello("TV", "a"));
  EXPECT_EQ(asking.seen, 1U);
  core->unsubscribeData(id);
  // Behind the first delivery, which comes on the data worker.
  GUID const last = core->requestData(cTelevisions, nullptr, &listener);
  EXPECT_TRUE(listener.waitFor(last));
}

}  // namespace
}  // namespace Zelv
