// Input over the wire, on the port that phones know.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/adapter/testing/Peer.h"
#include "zelv/controller/UserController.h"
#include "zelv/controller/testing/FakeCoreData.h"
#include "zelv/controller/testing/RecordingUserCallback.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace Zelv::Controller {
namespace {

using Adapter::NetworkAdapter;
using Platform::Fake::LogCapture;
using ::testing::ElementsAre;
using Testing::FakeCoreData;
using Testing::HeardInput;
using Testing::RecordingUserCallback;
using Zelv::Platform::Fake::OwnNetwork;
using Zelv::Testing::Peer;

constexpr std::uint16_t cPort = 4449;

IBase* findTree(GUID aInterfaceID) {
  return aInterfaceID == IID_ICoreData ? FakeCoreData::find() : nullptr;
}

class UserControllerService : public ::testing::Test {
 protected:
  UserControllerService() {
    Platform::Fake::ResetFakes();
    tree.reaction = [this](FakeCoreData::Request const& aRequest) {
      tree.answer(aRequest, "127.0.0.1");
    };
    controller->initialize();
  }
  ~UserControllerService() override {
    controller.reset();
    delete NetworkAdapter::getInstance();
    Platform::Fake::ResetFakes();
  }

  OwnNetwork network;
  LogCapture log;
  FakeCoreData tree;
  std::unique_ptr<UserController> controller = std::make_unique<UserController>(findTree);
  Peer phone{Peer::Datagram};
};

TEST_F(UserControllerService, BringsADatagramToItsSubscriber) {
  RecordingUserCallback callback;
  GUID const id = controller->subscribeUser("Key", &callback);
  ASSERT_TRUE(phone.sendTo(
      cPort,
      "<Envelope><Header><MessageID>6ba7b810-9dad-11d1-80b4-00c04fd430c8</MessageID></Header>"
      "<Body><OnInput><Type>Key</Type><Value>VolumeUp</Value>"
      "<DeviceGuid>6ba7b811-9dad-11d1-80b4-00c04fd430c8</DeviceGuid>"
      "<UserNickname>Anna</UserNickname></OnInput></Body></Envelope>\n"));
  ASSERT_TRUE(callback.waitFor(1)) << log.dump();
  EXPECT_THAT(callback.heard(),
              ElementsAre(HeardInput{"Key", "VolumeUp", "6ba7b811-9dad-11d1-80b4-00c04fd430c8",
                                     "Anna", id}));
}

TEST_F(UserControllerService, TakesABareDocumentWithOrWithoutALineFeed) {
  RecordingUserCallback callback;
  controller->subscribeUser("Text", &callback);
  std::string const head = "<OnInput><Type>Text</Type><Value>";
  std::string const tail =
      "</Value><DeviceGuid>d</DeviceGuid><UserNickname>u</UserNickname></OnInput>";
  ASSERT_TRUE(phone.sendTo(cPort, head + "one" + tail));
  ASSERT_TRUE(phone.sendTo(cPort, head + "two" + tail + "\n"));
  ASSERT_TRUE(callback.waitFor(2)) << log.dump();
  EXPECT_THAT(callback.values(), ElementsAre("one", "two"));
}

TEST_F(UserControllerService, GoesOnAfterWhateverStrangersSend) {
  RecordingUserCallback callback;
  controller->subscribeUser("Key", &callback);
  std::string const nested(1500, '<');
  for (std::string const& text :
       {std::string(), std::string("\n"), std::string("\0\0", 2), std::string("<Body></Body>"),
        std::string("</Body><Body>"), nested, std::string(4095, '\xff'), std::string(60000, 'x')}) {
    ASSERT_TRUE(phone.sendTo(cPort, text));
  }
  ASSERT_TRUE(phone.sendTo(cPort, "<OnInput><Type>Key</Type><UserNickname/></OnInput>"));
  EXPECT_TRUE(callback.waitFor(1)) << log.dump();
}

TEST_F(UserControllerService, GivesItsPortBackAtTheEnd) {
  EXPECT_FALSE(Peer(Peer::Datagram).bind(cPort));
  controller->terminate();
  delete NetworkAdapter::getInstance();
  EXPECT_TRUE(Peer(Peer::Datagram).bind(cPort));
}

}  // namespace
}  // namespace Zelv::Controller
