// Strangers that wish discovery ill. Whatever they send, it goes on serving the others.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>
#include <vector>

#include "zelv/controller/SeenMessages.h"
#include "zelv/core/RemoteDeviceList.h"
#include "zelv/core/UnresolvedDevices.h"
#include "zelv/core/testing/DiscoveryTest.h"
#include "zelv/infrastructure/MultiString.h"

namespace Zelv {
namespace {

using testing::ElementsAre;

class HostileDiscovery : public Testing::DiscoveryTest {
 protected:
  void SetUp() override {
    start();
    PCRealDebug::Silence();
  }

  /// A well-behaved device comes, is answered and goes.
  void expectServes() {
    take();
    hear(Texts::probe("ANY", cPeer));
    EXPECT_THAT(takeTypes(), ElementsAre("ProbeMatch"));
    hear(Texts::hello("TV", "good", "Good"));
    EXPECT_EQ(read("/Zelv/Devices/RemoteTV[@ID='good']/Name/text()"), "Good");
    hear(Texts::heartBeat("good"));
    EXPECT_EQ(stampOf("good"), nowText());
    hear(Texts::bye("good"));
    EXPECT_EQ(stampOf("good"), "none");
    tick();
    EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat"));
  }

  std::size_t devicesInList() {
    std::string const ids = read("/Zelv/Devices/*/@ID");
    return ids == "none" ? 0 : Infrastructure::MultiString::split(ids).size();
  }

  static std::string repeated(std::string const& aText, int aCount) {
    std::string text;
    for (int count = 0; count < aCount; ++count) {
      text += aText;
    }
    return text;
  }

  /// One of each kind, complete.
  static std::vector<std::string> oneOfEach() {
    return {Texts::probe("ANY", cPeer),
            Texts::probeMatch("TV", "x"),
            Texts::resolve(cLocalId, cPeer),
            Texts::resolveMatch("MOBILE", "x"),
            Texts::hello("MOBILE", "x"),
            Texts::bye("x"),
            Texts::heartBeat("x")};
  }

  /// Of a text, every element that stands in it, from "<" to the end of its own closing tag.
  static std::vector<std::string> elementsOf(std::string const& aText) {
    std::vector<std::string> elements;
    for (std::size_t open = aText.find('<'); open != std::string::npos;
         open = aText.find('<', open + 1)) {
      if (aText[open + 1] == '/') {
        continue;
      }
      std::string const name = aText.substr(open + 1, aText.find_first_of(" />", open) - open - 1);
      std::size_t const tagEnd = aText.find('>', open);
      std::size_t const close = aText.find("</" + name + ">", open);
      std::size_t const end = aText[tagEnd - 1] == '/' ? tagEnd + 1 : close + name.size() + 3;
      elements.push_back(aText.substr(open, end - open));
    }
    return elements;
  }

  static std::string replaced(std::string aText, std::string const& aOld, std::string const& aNew) {
    return aText.replace(aText.find(aOld), aOld.size(), aNew);
  }

  /// The element with another content.
  static std::string filled(std::string const& aElement, std::string const& aContent) {
    std::string const name = aElement.substr(1, aElement.find_first_of(" />") - 1);
    return "<" + name + ">" + aContent + "</" + name + ">";
  }

  /// Heard with an identifier of its own, so that it is no duplicate.
  void hearAnew(std::string aText) {
    std::size_t const id = aText.find("<MessageID>");
    if (id != std::string::npos && aText.compare(id + 11, 1, "<") != 0) {
      aText.insert(id + 11, std::to_string(++mCount) + "-");
    }
    hear(aText);
  }

 private:
  int mCount = 0;
};

TEST_F(HostileDiscovery, EachElementOfEachMessageMissing) {
  for (std::string const& message : oneOfEach()) {
    for (std::string const& element : elementsOf(message)) {
      hearAnew(replaced(message, element, ""));
    }
    expectServes();
  }
}

TEST_F(HostileDiscovery, EachElementOfEachMessageDoubled) {
  for (std::string const& message : oneOfEach()) {
    for (std::string const& element : elementsOf(message)) {
      hearAnew(replaced(message, element, element + element));
    }
    expectServes();
  }
}

TEST_F(HostileDiscovery, EachElementOfEachMessageEmpty) {
  for (std::string const& message : oneOfEach()) {
    for (std::string const& element : elementsOf(message)) {
      hearAnew(replaced(message, element, filled(element, "")));
    }
    expectServes();
  }
}

TEST_F(HostileDiscovery, EachElementOfEachMessageWithAMegabyte) {
  std::string const megabyte(1 << 20, 'm');
  for (std::string const& message : oneOfEach()) {
    for (std::string const& element : elementsOf(message)) {
      hearAnew(replaced(message, element, filled(element, megabyte)));
    }
    expectServes();
  }
  EXPECT_LE(devicesInList(), 2U);
}

TEST_F(HostileDiscovery, EachMessageCutAtEachByte) {
  for (std::string const& message : oneOfEach()) {
    for (std::size_t size = 0; size < message.size(); ++size) {
      hearAnew(message.substr(0, size));
    }
    expectServes();
  }
}

TEST_F(HostileDiscovery, BytesAtRandomAndMessagesWithOneByteChanged) {
  std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same on every run
  for (int round = 0; round < 2000; ++round) {
    std::string noise(random() % 200, '\0');
    for (char& byte : noise) {
      byte = static_cast<char>(random());
    }
    hear(noise);
  }
  for (std::string const& message : oneOfEach()) {
    for (int round = 0; round < 300; ++round) {
      std::string changed = message;
      changed[random() % changed.size()] = static_cast<char>(random());
      hearAnew(changed);
    }
  }
  EXPECT_LE(devicesInList(), RemoteDeviceList::MaxDevices);
  expectServes();
}

TEST_F(HostileDiscovery, DeepAndWideDocuments) {
  hear(repeated("<a>", 200000));
  hear(repeated("<a>", 200000) + repeated("</a>", 200000));
  hear(Texts::message("<Hello>" + repeated("<Device>", 5000) + "</Hello>"));
  std::string attributes;
  for (int index = 0; index < 10000; ++index) {
    attributes += " a" + std::to_string(index) + "='1'";
  }
  hear(Texts::message("<Hello><Device" + attributes + "/></Hello>"));
  hear(Texts::message("<Hello>" + Texts::description("TV", "x") + "</Hello>",
                      repeated("<H/>", 50000)));
  hear(Texts::message(repeated("<Hello/>", 50000)));
  expectServes();
}

TEST_F(HostileDiscovery, OddTextsWhereAnIdentifierIsExpected) {
  hear(Texts::hello("TV", "a"));
  hear(Texts::hello("TV", "b"));
  for (std::string const id :
       {"a[b", "]", "[", "x&apos; or &apos;1&apos;=&apos;1", "&apos;]|//*|/x[&apos;", "&quot;",
        "a&#x13;b", "&#x13;", "&lt;x>", "&amp;", "a/b", "*", "//*", "..", "@ID", "text()", "%s%n",
        "\xff\xfe", "\xc3("}) {
    hear(Texts::hello("TV", id));
    hear(Texts::hello("MOBILE", id));
    hear(Texts::probeMatch("TV", id));
    hear(Texts::heartBeat(id));
    hear(Texts::resolveMatch("TV", id));
    hear(Texts::resolve(id, cPeer));
    hear(Texts::bye(id));
    std::string const ids = televisions();
    EXPECT_EQ(ids.substr(0, 8), "a&#x13;b") << id;
    hear(Texts::heartBeat("a"));
    hear(Texts::heartBeat("b"));
    tick();
  }
  EXPECT_EQ(televisions(), "a&#x13;b") << "each that came in could be told to go";
  expectServes();
}

// One Bye that means everybody.
TEST_F(HostileDiscovery, AByeCannotRemoveOthers) {
  hear(Texts::hello("TV", "a"));
  hear(Texts::hello("MOBILE", "b"));
  for (char const* id : {"x&apos; or &apos;1&apos;=&apos;1", "a&apos; or @ID=&apos;b", "*", ""}) {
    hear(Texts::bye(id));
  }
  EXPECT_EQ(televisions(), "a");
  EXPECT_EQ(phones(), "b");
}

TEST_F(HostileDiscovery, InventedIdentifiersAreAskedForTwentyTimesASecond) {
  int resolves = 0;
  for (int index = 0; index < 20000; ++index) {
    hear("<Envelope><Header><MessageID>" + std::to_string(index) +
         "</MessageID></Header><Body><HeartBeat><Device ID='invented" + std::to_string(index) +
         "'/></HeartBeat></Body></Envelope>");
    if (index % 2000 == 1999) {
      resolves += static_cast<int>(take().size());
      FakeClock::Advance(1000);
    }
  }
  EXPECT_GT(resolves, 0);
  EXPECT_LE(resolves, 10 * (UnresolvedDevices::MaxPerSecond + 1));
  EXPECT_EQ(devicesInList(), 0U);
  expectServes();
  // Whoever is really there is asked for as soon as there is room.
  FakeClock::Advance(30000);
  take();
  hear(Texts::heartBeat("real"));
  EXPECT_THAT(takeTypes(), ElementsAre("Resolve"));
  hear(Texts::resolveMatch("TV", "real"));
  EXPECT_EQ(televisions(), "real");
}

TEST_F(HostileDiscovery, InventedDevicesFillTheListAndLeaveItWithTheNextTicks) {
  for (int index = 0; index < 1200; ++index) {
    hear(Texts::hello(index % 2 == 0 ? "TV" : "MOBILE", "invented" + std::to_string(index)));
  }
  EXPECT_EQ(devicesInList(), RemoteDeviceList::MaxDevices);
  FakeClock::Advance(20000);
  EXPECT_EQ(devicesInList(), 0U);
  expectServes();
}

// Newer identifiers push the oldest out; then a late copy counts as a message of its own.
TEST_F(HostileDiscovery, InventedMessagesPushOutTheOldestIdentifiersAlone) {
  std::string const hello = Texts::hello("TV", "a");
  hear(hello);
  auto const flood = [this](std::size_t aCount, std::string const& aPrefix) {
    for (std::size_t index = 0; index < aCount; ++index) {
      hear("<Envelope><Header><MessageID>" + aPrefix + std::to_string(index) +
           "</MessageID></Header><Body/></Envelope>");
    }
  };
  flood(Controller::SeenMessages::MaxEntries - 1, "first");
  hear(Texts::bye("a"));
  // The Bye was one message more: the Hello is forgotten, and its copy is heard.
  hear(hello);
  EXPECT_EQ(televisions(), "a");
  hear(Texts::bye("a"));
  hear(hello);
  EXPECT_EQ(televisions(), "none");
}

TEST_F(HostileDiscovery, AnIdentifierOfAMessageThatIsTooLongIsNotKept) {
  std::string const hello = Texts::envelope(Texts::messageId(std::string(129, 'i')),
                                            "<Hello>" + Texts::description("TV", "a") + "</Hello>");
  hear(hello);
  hear(Texts::bye("a"));
  hear(hello);
  EXPECT_EQ(televisions(), "a");
}

TEST_F(HostileDiscovery, SeveralThreadsAtOnceComeToNoHarm) {
  hear(Texts::hello("TV", "steady"));
  std::thread network([this] {
    for (int round = 0; round < 300; ++round) {
      hear(Texts::hello("TV", "a" + std::to_string(round % 7)));
      hear(Texts::heartBeat("steady"));
      hear(Texts::bye("a" + std::to_string(round % 5)));
      hear(Texts::probe("ANY", cPeer));
    }
  });
  std::thread reader([this] {
    for (int round = 0; round < 300; ++round) {
      read("/Zelv/Devices/RemoteTV/@ID");
      read("/Zelv/Devices/*[@ID='steady']/Name/text()");
      service->onData("", "", nullptr, GUID::nullGUID);
    }
  });
  for (int round = 0; round < 300; ++round) {
    tick();
  }
  network.join();
  reader.join();
  EXPECT_EQ(stampOf("steady"), nowText());
}

// The lifetime commands come on a thread of their own while the others are at work.
TEST_F(HostileDiscovery, StartsAgainWhileMessagesCome) {
  hear(Texts::hello("TV", "steady"));
  std::thread network([this] {
    for (int round = 0; round < 300; ++round) {
      hear(Texts::probe("ANY", cPeer));
      hear(Texts::heartBeat("a" + std::to_string(round)));
      hear(Texts::heartBeat("steady"));
    }
  });
  for (int round = 0; round < 20; ++round) {
    service->initialize();
    tick();
    if (round % 5 == 4) {
      service->terminate();
    }
  }
  network.join();
  EXPECT_EQ(televisions(), "steady");
}

}  // namespace
}  // namespace Zelv
