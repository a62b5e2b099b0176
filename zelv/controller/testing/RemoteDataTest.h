#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/controller/testing/RawDevice.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/controller/testing/RemoteNode.h"
#include "zelv/platform/PCSemaphore.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace Zelv::Controller::Testing {

/// A set called "me" and a raw device called "phone", in a network of their own.
class RemoteDataTest : public ::testing::Test {
 protected:
  static constexpr char const* cId = "2cb63c08-01e0-41cd-950e-1566f18e0983";
  static constexpr char const* cOther = "9f0a6c1e-0000-4000-8000-00000000000a";

  RemoteDataTest() {
    Platform::Fake::ResetFakes();
    Adapter::NetworkAdapter::getInstance();
    inside.Create(0);
    leave.Create(0);
    node = std::make_unique<RemoteNode<>>("me");
    device = std::make_unique<RawDevice>();
    node->know("B", device->url());
    node->texts.put("/Zelv/A", "one");
  }
  ~RemoteDataTest() override {
    node->stop();
    Adapter::NetworkAdapter* const adapter = Adapter::NetworkAdapter::getInstance();
    adapter->terminate();
    delete adapter;
    node.reset();
    Platform::Fake::ResetFakes();
  }

  /// A message arrives, and has been handled.
  void hear(std::string const& aMessage) { node->remote->onMessage(aMessage + "\n", "\n"); }

  /// The next message at the device, with "#" for its identifier.
  std::string next() { return RawDevice::withoutMessageId(device->take()); }

  static std::string onData(std::string const& aId, std::string const& aValue) {
    return "<Envelope><Header><SenderID>me</SenderID><MessageID>#</MessageID>"
           "<From>tcp://127.0.0.1:4446/</From></Header><Body><OnData><SubscriptionId>" +
           aId + "</SubscriptionId><Data>" + aValue + "</Data></OnData></Body></Envelope>";
  }

  /// The data worker stands still in its next read of "/Zelv/A", until leave is given.
  void holdWorker() {
    node->texts.whenRead = [this](std::string const& aXPath) {
      if (aXPath == "/Zelv/A") {
        inside.Give();
        leave.Take();
      }
    };
  }

  /// Nothing is on its way to the device: what it gets next is the answer to a question of now.
  void expectSilence() {
    node->texts.put("/Zelv/silence", "!");
    node->drain();
    hear(device->requestData(cOther, "/Zelv/silence"));
    EXPECT_EQ(next(), onData(cOther, "!"));
  }

  Zelv::Platform::Fake::OwnNetwork network;
  Platform::Fake::LogCapture log;
  PCSemaphore inside;
  PCSemaphore leave;
  RecordingCallback callback;
  std::unique_ptr<RawDevice> device;
  std::unique_ptr<RemoteNode<>> node;
};

}  // namespace Zelv::Controller::Testing
