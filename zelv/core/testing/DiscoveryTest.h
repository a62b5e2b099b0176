#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "zelv/adapter/testing/Peer.h"
#include "zelv/core/Core.h"
#include "zelv/core/DiscoveryService.h"
#include "zelv/core/MultiDevice.h"
#include "zelv/core/testing/DiscoveryTexts.h"
#include "zelv/core/testing/Listener.h"
#include "zelv/core/testing/SmallSet.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeInterfaces.h"
#include "zelv/platform/fake/FakeSockets.h"

namespace Zelv::Testing {

/// A discovery of the test's own beside a running set that has none. What it sends is caught, and
/// what it hears is what the test says to it.
class DiscoveryTest : public ::testing::Test {
 protected:
  using Texts = DiscoveryTexts;
  using Datagram = Platform::Fake::Datagram;
  using FakeClock = Platform::Fake::FakeClock;
  using FakeSockets = Platform::Fake::FakeSockets;

  static constexpr char const* cGroup = "127.0.0.9";
  static constexpr char const* cLocalId = "6ba7b810-9dad-11d1-80b4-00c04fd430c8";
  static constexpr char const* cAddress = "192.0.2.1";
  static constexpr char const* cPeer = "udp://192.0.2.9:4451";
  static constexpr char const* cTelevisions = "/Zelv/Devices/RemoteTV/@ID";
  static constexpr char const* cPhones = "/Zelv/Devices/Mobile/@ID";

  /// What differs from test to test in Devices.xml.
  struct Settings {
    std::string group = cGroup;
    std::string interval = "10";
    std::string address = cAddress;
    std::string name = "Mine";
  };

  void TearDown() override { end(); }

  /// Back to before make(). The subscriptions of the listener, and the callbacks of the network,
  /// end before they go.
  void end() {
    if (service) {
      service->terminate();
    }
    InterfaceFactory::terminate();
    service.reset();
    device.reset();
    if (set.directories.hasWritable("Devices.xml")) {
      set.directories.removeWritable("Devices.xml");
    }
    collect();
    mCaught.clear();
  }

  /// The set and a discovery that has not started yet.
  void make(Settings const& aSettings) {
    port = Peer::freePort(Peer::Datagram);
    Platform::Fake::FakeInterfaces::Set({});
    set.directories.putReadOnly("Devices.xml", devices(aSettings));
    core = SmallSet::start();
    ASSERT_NE(core, nullptr) << set.log.dump();
    // The last of the set's own services: what sockets do from now on is discovery's doing. They
    // wait for the address, which is asked for behind the identity.
    EXPECT_TRUE(set.log.waitFor(PCRealDebug::Trace, "UserController::onData: Exit.",
                                aSettings.address.empty() ? 1 : 2));
    device = std::make_unique<Core::MultiDevice>();
    // The running set has put its product code there, which is none.
    device->getDeviceData()->setContent("/Devices/LocalTV/Model/text()", "M1", false);
    service = std::make_unique<Core::DiscoveryService>(device.get());
    FakeSockets::CatchDatagrams();
    set.log.clear();
  }
  void make() { make(Settings()); }

  /// Lets it begin; what it said then is forgotten.
  void start(Settings const& aSettings) {
    make(aSettings);
    service->initialize();
    std::size_t const messages = aSettings.address.empty() ? 1 : 2;
    EXPECT_EQ(takeWhenThereAre(messages).size(), messages) << set.log.dump();
    EXPECT_TRUE(set.log.waitFor(PCRealDebug::Trace, "DiscoveryService::onData: Exit."));
    set.log.clear();
  }
  void start() { start(Settings()); }

  std::string devices(Settings const& aSettings) const {
    return "<Devices><MulticastGroup>" + aSettings.group + "</MulticastGroup><MulticastPort>" +
           std::to_string(port) + "</MulticastPort><HeartBeatInterval>" + aSettings.interval +
           "</HeartBeatInterval><Model>M1</Model><LocalTV ID=\"" + cLocalId + "\"><Name>" +
           aSettings.name +
           "</Name><Model>M1</Model><Location>Here</Location><Interfaces><NetworkInterface "
           "ID=\"1\"><MACAddress></MACAddress><IPv4><Address>" +
           aSettings.address +
           "</Address></IPv4></NetworkInterface></Interfaces></LocalTV></Devices>";
  }

  void hear(std::string const& aText) { service->onMessage(aText, aText); }
  void tick() { service->onTimer("HeartBeatTimer", GUID::nullGUID); }

  /// Lets time pass, with the ticks that fall into it.
  static void pass(int aSeconds) { FakeClock::Advance(aSeconds * 1000LL); }

  /// What was sent since the last call, each message once: it has to go out three times, the
  /// copies being equal.
  std::vector<Datagram> take() {
    collect();
    std::vector<Datagram> messages;
    for (std::size_t index = 0; index < mCaught.size(); ++index) {
      if (index % 3 == 0) {
        messages.push_back(mCaught[index]);
      } else {
        EXPECT_EQ(mCaught[index].text, messages.back().text);
        EXPECT_EQ(mCaught[index].address, messages.back().address);
      }
    }
    EXPECT_EQ(mCaught.size() % 3, 0U) << "a message did not go out three times";
    mCaught.clear();
    return messages;
  }

  /// As take(), of messages that other threads send.
  std::vector<Datagram> takeWhenThereAre(std::size_t aCount) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (collect(); mCaught.size() < 3 * aCount && std::chrono::steady_clock::now() < end;
         collect()) {
      std::this_thread::yield();
    }
    return take();
  }

  /// The types of what was sent since the last call, in order.
  std::vector<std::string> takeTypes() {
    std::vector<std::string> types;
    for (Datagram const& message : take()) {
      types.push_back(Texts::typeOf(message.text));
    }
    return types;
  }

  /// As a reader of the tree gets it; "none" where there is nothing.
  std::string read(std::string const& aPath) {
    std::string value;
    return service->getData(aPath, value, GUID::nullGUID) == 0 ? value : "none";
  }
  std::string televisions() { return read(cTelevisions); }
  std::string phones() { return read(cPhones); }
  std::string stampOf(std::string const& aId) {
    return read("/Zelv/Devices/*[@ID='" + aId + "']/LastHeartBeat/text()");
  }
  static std::string nowText(int aOffset = 0) {
    return std::to_string(PCTime::EpochTime() + aOffset);
  }

  /// From here on told() knows what subscribers are told.
  void subscribe() {
    mTelevisions = core->subscribeData(cTelevisions, nullptr, &listener);
    mPhones = core->subscribeData(cPhones, nullptr, &listener);
    ASSERT_TRUE(listener.waitFor(mTelevisions));
    ASSERT_TRUE(listener.waitFor(mPhones));
    mTold = listener.all().size();
  }

  /// "TV " or "MOBILE " and the list, for each time that subscribers were told since the last call.
  std::vector<std::string> told() {
    std::vector<std::string> result;
    std::vector<Told> const all = listener.all();
    for (; mTold < all.size(); ++mTold) {
      result.push_back((all[mTold].id == mTelevisions ? "TV " : "MOBILE ") + all[mTold].value);
    }
    return result;
  }

  Listener listener;
  SmallSet set;
  std::uint16_t port = 0;
  std::unique_ptr<Core::MultiDevice> device;
  std::unique_ptr<Core::DiscoveryService> service;
  Core* core = nullptr;

 private:
  void collect() {
    std::vector<Datagram> const caught = FakeSockets::TakeDatagrams();
    mCaught.insert(mCaught.end(), caught.begin(), caught.end());
  }

  GUID mTelevisions;
  GUID mPhones;
  std::size_t mTold = 0;
  std::vector<Datagram> mCaught;
};

}  // namespace Zelv::Testing
