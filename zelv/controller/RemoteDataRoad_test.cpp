// The whole road of remote data, between two sides of this library and over the wire.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/controller/testing/RemoteDataTest.h"

namespace Zelv::Controller {
namespace {

using Infrastructure::URL;
using Testing::RawDevice;
using Testing::RemoteDataTest;
using Testing::RemoteNode;
using ::testing::SizeIs;

/// The other set, "far", is served at another port: two on one machine cannot have the same.
class RemoteDataRoad : public RemoteDataTest {
 protected:
  RemoteDataRoad() {
    far = std::make_unique<RemoteNode<2>>("far", "");
    std::uint16_t const port = Zelv::Testing::Peer::freePort(Zelv::Testing::Peer::Stream);
    URL const url("tcp", "127.0.0.1", std::to_string(port), "");
    Adapter::NetworkAdapter::getInstance()->registerService(url, far->remote, "");
    node->know("far", url.toString());
    far->texts.put("/Zelv/Devices/LocalTV/Name/text()", "Kitchen");
    far->start();
    node->start();
  }
  ~RemoteDataRoad() override {
    far->stop();
    node->stop();
    // Nobody stands at the door any more when the sets go.
    Adapter::NetworkAdapter::getInstance()->terminate();
    delete Adapter::NetworkAdapter::getInstance();
    Adapter::NetworkAdapter::getInstance();
    far.reset();
  }

  std::unique_ptr<RemoteNode<2>> far;
};

TEST_F(RemoteDataRoad, LeadsARequestThereAndItsAnswerBack) {
  std::string const path = "/Zelv[@DeviceId='far']/Devices/LocalTV/Name/text()";
  GUID const id = node->controller.requestData(path, nullptr, &callback);
  ASSERT_TRUE(callback.waitFor(1));
  EXPECT_EQ(callback.heard()[0].path, path);
  EXPECT_EQ(callback.heard()[0].value, "Kitchen");
  EXPECT_EQ(callback.heard()[0].id, id);
}

TEST_F(RemoteDataRoad, LeadsEachChangeToASubscriber) {
  GUID const id = node->controller.subscribeData(
      "/Zelv[@DeviceId='far']/Devices/LocalTV/Name/text()", nullptr, &callback);
  ASSERT_TRUE(callback.waitFor(1));
  far->change("/Zelv/Devices/LocalTV/Name/text()", "Bath");
  ASSERT_TRUE(callback.waitFor(2));
  EXPECT_EQ(callback.heardOf(id)[0].value, "Kitchen");
  EXPECT_EQ(callback.heardOf(id)[1].value, "Bath");
}

TEST_F(RemoteDataRoad, LeadsRequestsInTheirOrderAndEachOnce) {
  for (int index = 0; index < 100; ++index) {
    far->texts.put("/Zelv/N" + std::to_string(index), std::to_string(index));
  }
  std::vector<GUID> ids;
  for (int index = 0; index < 100; ++index) {
    ids.push_back(node->controller.requestData("/Zelv[@DeviceId='far']/N" + std::to_string(index),
                                               nullptr, &callback));
  }
  ASSERT_TRUE(callback.waitFor(100));
  for (int index = 0; index < 100; ++index) {
    auto const heard = callback.heardOf(ids[static_cast<std::size_t>(index)]);
    ASSERT_THAT(heard, SizeIs(1));
    EXPECT_EQ(heard[0].value, std::to_string(index));
  }
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  EXPECT_EQ(far->remote->getContexts().size(), 0U);
}

TEST_F(RemoteDataRoad, IsOpenForARawDevice) {
  EXPECT_EQ(RawDevice::tell(4446, device->requestData(cId, "/Zelv/A")), "\n");
  EXPECT_EQ(next(), onData(cId, "one"));
  EXPECT_EQ(RawDevice::tell(4446, device->subscribeData(cId, "/Zelv/A")), "\n");
  EXPECT_EQ(next(), onData(cId, "one"));
  EXPECT_EQ(RawDevice::tell(4446, RawDevice::setData("/Zelv/A", "<b>two</b>")), "\n");
  EXPECT_EQ(next(), onData(cId, "<b>two</b>"));
  EXPECT_EQ(node->texts.get("/Zelv/A"), "<b>two</b>");
  EXPECT_EQ(RawDevice::tell(4446, device->unsubscribeData(cId)), "\n");
  EXPECT_TRUE(log.waitFor(
      PCRealDebug::Notable,
      std::string("RemoteDataController::onMessage: Removing subscription '") + cId + "'."));
  GUID const id = node->controller.requestData("/Zelv[@DeviceId='B']/A", nullptr, &callback);
  device->take();
  EXPECT_EQ(RawDevice::tell(4446, device->onData(id.toString(), "three")), "\n");
  ASSERT_TRUE(callback.waitFor(1));
  EXPECT_EQ(callback.heard()[0].value, "three");
}

TEST_F(RemoteDataRoad, CarriesAChangeToAThousandSubscriptions) {
  PCRealDebug::SetLevel(PCRealDebug::Warning);
  constexpr std::size_t count = 1000;
  for (std::size_t index = 0; index < count; ++index) {
    node->controller.subscribeData("/Zelv[@DeviceId='far']/Devices/LocalTV/Name/text()", nullptr,
                                   &callback);
  }
  ASSERT_TRUE(callback.waitFor(count));
  EXPECT_EQ(far->remote->getContexts().size(), count);
  far->change("/Zelv/Devices/LocalTV/Name/text()", "Bath");
  ASSERT_TRUE(callback.waitFor(2 * count));
  far->mobiles("somebody");
  EXPECT_EQ(far->remote->getContexts().size(), 0U);
  EXPECT_EQ(far->remote->getQueues().size(), 0U);
}

}  // namespace
}  // namespace Zelv::Controller
