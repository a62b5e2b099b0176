// What diagnostics see of the queues to other devices.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/controller/CommandQueues.h"
#include "zelv/controller/RemoteDeviceQueues.h"
#include "zelv/controller/testing/RawDevice.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace Zelv::Controller {
namespace {

using Infrastructure::URL;
using Testing::RawDevice;

class DeviceQueueStates : public ::testing::Test {
 protected:
  DeviceQueueStates() : mAdapter(Adapter::NetworkAdapter::getInstance()) {}

  Platform::Fake::OwnNetwork mNetwork;
  std::unique_ptr<Adapter::NetworkAdapter> mAdapter;
};

TEST_F(DeviceQueueStates, OfRemoteDataNameDeviceAndServiceWithItsCounters) {
  RemoteDeviceQueues queues;
  EXPECT_TRUE(queues.states().empty());
  RawDevice device;
  queues.post("a text", URL(device.url()), "phone");
  EXPECT_EQ(device.take(), "a text");
  // The queue has nothing else to do, and ends with its thread.
  auto const states = queues.states();
  ASSERT_EQ(states.size(), 1U);
  EXPECT_EQ(states.front().deviceId, "phone");
  EXPECT_EQ(states.front().url, URL(device.url()).toString());
  EXPECT_EQ(states.front().counters.length, 0U);
  EXPECT_EQ(states.front().counters.bytes, 0U);
  EXPECT_EQ(states.front().counters.attempts, 1U);
  queues.terminate();
}

TEST_F(DeviceQueueStates, OfCommandsNameTheService) {
  CommandQueues queues;
  auto queue = std::make_unique<DeviceServiceQueue>();
  RawDevice device;
  ASSERT_TRUE(queue->initialize(URL(device.url()), "phone"));
  queues.add("phone", std::move(queue), "a text");
  EXPECT_EQ(device.take(), "a text");
  auto const states = queues.states();
  ASSERT_EQ(states.size(), 1U);
  EXPECT_EQ(states.front().mDeviceId, "phone");
  EXPECT_EQ(states.front().mURL, URL(device.url()).toString());
  queues.removeAll();
  queues.drain();
}

}  // namespace
}  // namespace Zelv::Controller
