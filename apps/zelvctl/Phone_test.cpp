#include "apps/zelvctl/Phone.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

#include "apps/zelvctl/testing/LoopbackHome.h"

namespace ZelvCtl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

char const* const kId = "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10";

std::string envelope(std::string const& aMessageId, std::string const& aBody,
                     std::string const& aHeader = "") {
  return "<Envelope><Header><SenderID>x</SenderID><MessageID>" + aMessageId + "</MessageID>" +
         aHeader + "</Header><Body>" + aBody + "</Body></Envelope>\n";
}

std::string description(std::string const& aMessage, std::string const& aId,
                        std::string const& aType = "TV", std::string const& aName = "Kitchen") {
  return "<" + aMessage + "><Device ID='" + aId + "'><Name>" + aName +
         "</Name><Model>M1</Model><Location>here</Location><Type>" + aType +
         "</Type><Services><Service><Name>DataControl</Name><URL>tcp://10.77.0.1:4446/</URL>"
         "</Service></Services></Device></" +
         aMessage + ">";
}

std::string sign(std::string const& aMessage, std::string const& aId) {
  return "<" + aMessage + "><Device ID='" + aId + "' /></" + aMessage + ">";
}

std::string probe(std::string const& aType) {
  return "<Probe><Criteria><Device><Type>" + aType + "</Type></Device></Criteria></Probe>";
}

class PhoneTest : public testing::Test {
 protected:
  PhoneTest() {
    mPhone = std::make_unique<Phone>(
        Identity{kId, "Tom", "127.0.0.1", mHome.port()}, mHome.group(),
        [this](bool aArrived, Device const& aDevice) { note(aArrived, aDevice); },
        [this] { return Phone::Clock::time_point(std::chrono::seconds(mSeconds)); });
    mProbe = mHome.receiveMessage();
    mHello = mHome.receiveMessage();
  }

  void note(bool aArrived, Device const& aDevice) {
    std::lock_guard const lock(mLock);
    mEvents.push_back((aArrived ? "+ " : "- ") + aDevice.type + " " + aDevice.id + " " +
                      aDevice.name + " " + aDevice.address);
  }

  /// Sends a message and waits until the phone has dealt with it, and with all before it.
  void tell(std::string const& aText) {
    mHome.send(aText);
    ask();
  }

  /// Asks the phone to describe itself. @return all that it sent before the answer.
  std::vector<std::string> ask() {
    std::string const id = "ask-" + std::to_string(++mAsked);
    mHome.send(envelope(id, sign("Resolve", kId),
                        "<ReplyTo>udp://" + mHome.url().substr(6) + "</ReplyTo>"));
    std::vector<std::string> before;
    for (std::string message = mHome.receiveMessage(); !message.empty();
         message = mHome.receiveMessage()) {
      if (message.find("<RelatesTo>" + id + "</RelatesTo>") != std::string::npos) {
        return before;
      }
      before.push_back(message);
    }
    ADD_FAILURE() << "the phone is silent";
    return before;
  }

  std::vector<std::string> events() {
    std::lock_guard const lock(mLock);
    return std::exchange(mEvents, {});
  }

  LoopbackHome mHome;
  std::atomic<int> mSeconds = 1000;
  std::mutex mLock;
  std::vector<std::string> mEvents;
  std::unique_ptr<Phone> mPhone;
  std::string mProbe;
  std::string mHello;
  int mAsked = 0;
};

TEST_F(PhoneTest, AsksWhoIsThereThenAnnouncesItselfThreeTimesEach) {
  EXPECT_THAT(mProbe, HasSubstr("<Type>ANY</Type>"));
  EXPECT_THAT(mProbe, HasSubstr("<ReplyTo>udp://127.0.0.1:" + mHome.port() + "</ReplyTo>"));
  EXPECT_THAT(mHello, HasSubstr("<Hello><Device ID='" + std::string(kId) + "'><Name>Tom</Name>"));
  EXPECT_THAT(mHello, HasSubstr("<Type>MOBILE</Type>"));
}

TEST_F(PhoneTest, SaysGoodbyeAtTheEnd) {
  mPhone.reset();
  EXPECT_THAT(mHome.receiveMessage(),
              HasSubstr("<Bye><Device ID='" + std::string(kId) + "' /></Bye>"));
}

TEST_F(PhoneTest, TakesADeviceInFromEachKindOfDescriptionOnce) {
  int number = 0;
  for (char const* message : {"Hello", "ProbeMatch", "ResolveMatch"}) {
    std::string const id = std::string("id-") + message;
    std::string const first = envelope(std::to_string(++number), description(message, id));
    mHome.send(first);
    mHome.send(first);
    mHome.send(envelope(std::to_string(++number), description(message, id)));
    ask();
    EXPECT_THAT(events(), ElementsAre("+ TV " + id + " Kitchen 10.77.0.1"));
  }
  EXPECT_EQ(mPhone->devices().size(), 3U);
}

TEST_F(PhoneTest, TakesInOtherPhonesAndNothingElse) {
  tell(envelope("1", description("Hello", "a", "MOBILE")));
  tell(envelope("2", description("Hello", "b", "FRIDGE")));
  tell(envelope("3", description("Hello", "", "TV")));
  tell(envelope("4", description("Hello", "c[d", "TV")));
  tell(envelope("5", description("Hello", kId, "MOBILE")));
  tell(envelope("6", description("Shout", "e", "TV")));
  tell("no XML at all");
  tell("<Envelope>");
  EXPECT_THAT(events(), ElementsAre("+ MOBILE a Kitchen 10.77.0.1"));
}

TEST_F(PhoneTest, KnowsADeviceByItsLatestDescription) {
  tell(envelope("1", description("Hello", "a", "TV", "Old")));
  tell(envelope("2", description("Hello", "a", "TV", "New")));
  EXPECT_THAT(events(), ElementsAre("+ TV a Old 10.77.0.1"));
  ASSERT_EQ(mPhone->devices().size(), 1U);
  EXPECT_EQ(mPhone->devices()[0].name, "New");
  EXPECT_EQ(mPhone->devices()[0].model, "M1");
}

TEST_F(PhoneTest, KnowsTheServicesThatItCanMakeUseOf) {
  using Services = std::map<std::string, std::string>;
  tell(envelope("1",
                "<Hello><Device ID='a'><Name>N</Name><Type>TV</Type><Services>"
                "<Service><Name>Other</Name><URL>tcp://10.77.0.1:1/</URL></Service>"
                "<Service><Name>DataControl</Name><URL>tcp://10.77.0.1:2/</URL></Service>"
                "<Service><Name>InputControl</Name><URL>udp://10.77.0.1:3/</URL></Service>"
                "</Services></Device></Hello>"));
  ASSERT_EQ(mPhone->devices().size(), 1U);
  EXPECT_EQ(mPhone->devices()[0].services, (Services{{"DataControl", "tcp://10.77.0.1:2/"},
                                                     {"InputControl", "udp://10.77.0.1:3/"}}));
}

TEST_F(PhoneTest, LetsADeviceGoAtItsBye) {
  tell(envelope("1", description("Hello", "a")));
  tell(envelope("2", sign("Bye", "b")));
  tell(envelope("3", sign("Bye", "a")));
  tell(envelope("4", sign("Bye", "a")));
  EXPECT_THAT(events(), ElementsAre("+ TV a Kitchen 10.77.0.1", "- TV a Kitchen 10.77.0.1"));
  EXPECT_THAT(mPhone->devices(), IsEmpty());
}

TEST_F(PhoneTest, AsksOnceForADeviceThatItHearsAndDoesNotKnow) {
  std::string const first = envelope("1", sign("HeartBeat", "a"));
  mHome.send(first);
  mHome.send(first);
  mHome.send(envelope("2", sign("HeartBeat", "a")));
  auto const sent = ask();
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_THAT(sent[0], HasSubstr("<Resolve><Device ID='a'/></Resolve>"));
  EXPECT_THAT(sent[0], HasSubstr("<ReplyTo>udp://127.0.0.1:" + mHome.port() + "</ReplyTo>"));
  ++mSeconds;
  mHome.send(envelope("3", sign("HeartBeat", "a")));
  EXPECT_EQ(ask().size(), 1U) << "the answer may have been lost";
}

TEST_F(PhoneTest, AsksForNoDeviceThatItKnowsOrCouldNotName) {
  tell(envelope("1", description("Hello", "a")));
  mHome.send(envelope("2", sign("HeartBeat", "a")));
  mHome.send(envelope("3", sign("HeartBeat", "")));
  mHome.send(envelope("4", sign("HeartBeat", "[")));
  mHome.send(envelope("5", sign("HeartBeat", kId)));
  EXPECT_THAT(ask(), IsEmpty());
}

TEST_F(PhoneTest, SendsAHeartbeatAtATickAndDropsWhatIsSilentTooLong) {
  using std::chrono::seconds;
  tell(envelope("1", description("Hello", "a")));
  tell(envelope("2", description("Hello", "b")));
  events();
  mSeconds += 12;
  tell(envelope("3", sign("HeartBeat", "b")));
  mPhone->tick(seconds(12));
  EXPECT_THAT(mHome.receiveMessage(),
              HasSubstr("<HeartBeat><Device ID='" + std::string(kId) + "' /></HeartBeat>"));
  EXPECT_THAT(events(), IsEmpty());
  ++mSeconds;
  mPhone->tick(seconds(12));
  EXPECT_THAT(events(), ElementsAre("- TV a Kitchen 10.77.0.1"));
}

TEST_F(PhoneTest, AnswersProbesForPhonesAndForAllButNotForTelevisions) {
  std::string const reply = "<ReplyTo>" + mHome.url() + "</ReplyTo>";
  for (char const* type : {"MOBILE", "ANY"}) {
    mHome.send(envelope(std::string("probe-") + type, probe(type), reply));
    std::string const answer = mHome.receiveMessage();
    EXPECT_THAT(answer, HasSubstr("<ProbeMatch><Device ID='" + std::string(kId) + "'>"));
    EXPECT_THAT(answer, HasSubstr(std::string("<RelatesTo>probe-") + type + "</RelatesTo>"));
  }
  mHome.send(envelope("1", probe("TV"), reply));
  mHome.send(envelope("2", probe("")));
  EXPECT_THAT(ask(), IsEmpty());
}

TEST_F(PhoneTest, AnswersAResolveOfItselfAlone) {
  std::string const reply = "<ReplyTo>" + mHome.url() + "</ReplyTo>";
  mHome.send(envelope("1", sign("Resolve", "other"), reply));
  EXPECT_THAT(ask(), IsEmpty());
  mHome.send(envelope("2", sign("Resolve", kId), reply));
  EXPECT_THAT(mHome.receiveMessage(), HasSubstr("<ResolveMatch><Device ID='" + std::string(kId)));
}

TEST_F(PhoneTest, GivesNoAnswerWhereNoDatagramCanGo) {
  for (char const* address : {"", "nonsense", "tcp://127.0.0.1:1/", "udp:"}) {
    mHome.send(envelope(std::string("to ") + address, sign("Resolve", kId),
                        "<ReplyTo>" + std::string(address) + "</ReplyTo>"));
  }
  mHome.send(envelope("<", sign("Resolve", kId), "<ReplyTo>" + mHome.url() + "</ReplyTo>"));
  EXPECT_THAT(ask(), IsEmpty());
}

TEST(PhoneAlone, SaysWhyItCannotJoin) {
  Identity const identity{kId, "Tom", "127.0.0.1", "0"};
  EXPECT_THROW(
      {
        try {
          Phone(identity, "239.255.44.46", [](bool, Device const&) {});
        } catch (std::runtime_error const& error) {
          EXPECT_STREQ(error.what(), "cannot join the group 239.255.44.46, port 0, at 127.0.0.1");
          throw;
        }
      },
      std::runtime_error);
}

}  // namespace
}  // namespace ZelvCtl
