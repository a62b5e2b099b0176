// What this set answers, and to whom.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "zelv/adapter/testing/Peer.h"
#include "zelv/core/testing/DiscoveryTest.h"

namespace Zelv {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Testing::Peer;

class DiscoveryAnswers : public Testing::DiscoveryTest {
 protected:
  static std::string header(std::string const& aMessage, std::string const& aName) {
    return Texts::between(aMessage, "<" + aName + ">", "</" + aName + ">");
  }
};

TEST_F(DiscoveryAnswers, AProbeForTelevisionsOrAnyDeviceGetsAProbeMatchToItsReplyAddress) {
  start();
  for (char const* type : {"TV", "ANY"}) {
    std::string const probe = Texts::probe(type, "udp://192.0.2.9:4499");
    hear(probe);
    std::vector<Datagram> const sent = take();
    ASSERT_EQ(sent.size(), 1U) << type;
    EXPECT_EQ(sent[0].address, "192.0.2.9");
    EXPECT_EQ(sent[0].port, 4499);
    EXPECT_EQ(Texts::typeOf(sent[0].text), "ProbeMatch");
    EXPECT_EQ(header(sent[0].text, "RelatesTo"), header(probe, "MessageID"));
    EXPECT_THAT(sent[0].text, HasSubstr("<Name>Mine</Name>"));
    EXPECT_THAT(sent[0].text, HasSubstr("<Type>TV</Type>"));
  }
}

TEST_F(DiscoveryAnswers, AProbeForOtherDevicesGetsNone) {
  start();
  for (char const* type : {"MOBILE", "tv", "any", "", "TVANY"}) {
    hear(Texts::probe(type, cPeer));
  }
  EXPECT_THAT(takeTypes(), IsEmpty());
}

TEST_F(DiscoveryAnswers, AResolveOfThisSetGetsAResolveMatch) {
  start();
  std::string const resolve = Texts::resolve(cLocalId, "udp://192.0.2.9:4499/");
  hear(resolve);
  std::vector<Datagram> const sent = take();
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0].address, "192.0.2.9");
  EXPECT_EQ(sent[0].port, 4499);
  EXPECT_EQ(Texts::typeOf(sent[0].text), "ResolveMatch");
  EXPECT_EQ(header(sent[0].text, "RelatesTo"), header(resolve, "MessageID"));
}

TEST_F(DiscoveryAnswers, AResolveOfAnotherDeviceGetsNone) {
  start();
  hear(Texts::resolve("6ba7b810-9dad-11d1-80b4-00c04fd430c9", cPeer));
  hear(Texts::resolve("", cPeer));
  EXPECT_THAT(takeTypes(), IsEmpty());
}

TEST_F(DiscoveryAnswers, WithoutAnAddressNobodyGetsAnyAndNothingIsSaidOfIt) {
  start({.address = ""});
  hear(Texts::probe("ANY", cPeer));
  hear(Texts::probe("MOBILE", "no URL"));
  hear(Texts::resolve(cLocalId, cPeer));
  hear(Texts::resolve("other", "no URL"));
  EXPECT_THAT(takeTypes(), IsEmpty());
  EXPECT_EQ(set.log.count(PCRealDebug::Warning), 0);
  EXPECT_EQ(set.log.count(PCRealDebug::Notable), 0);
}

TEST_F(DiscoveryAnswers, AReplyAddressThatIsNoUrlOrNoHostGetsNone) {
  start();
  for (char const* reply :
       {"", "x", "udp:", "udp:/", "udp://192.0.2.9", "udp://239.255.44.46:4451",
        "udp://224.0.0.1:4451", "udp://0.0.0.0:4451", "udp://0:4451", "udp://255.255.255.255:4451",
        "tcp://239.1.2.3:4451", "tcp://0.0.0.0:4451", "udp://0xe0.0.0.1:4451",
        "udp://3758096385:4451", "udp://239.255.11310:4451", "udp://00.0x0.0.0:4451"}) {
    set.log.clear();
    hear(Texts::probe("ANY", reply));
    EXPECT_TRUE(set.log.has(
        PCRealDebug::Warning,
        "DiscoveryService::OnMessage: (Probe) replyTo is not a URL '" + std::string(reply) + "'."))
        << reply << "\n"
        << set.log.dump();
    hear(Texts::resolve(cLocalId, reply));
    EXPECT_TRUE(set.log.has(PCRealDebug::Warning,
                            "DiscoveryService::OnMessage: (Resolve) replyTo is not a URL '" +
                                std::string(reply) + "'."))
        << reply;
  }
  EXPECT_THAT(takeTypes(), IsEmpty());
}

TEST_F(DiscoveryAnswers, EveryOtherHostIsAnswered) {
  start();
  for (char const* reply : {"udp://127.0.0.1:4451", "udp://10.0.0.1:1", "udp://223.255.255.255:9",
                            "udp://198.51.100.255:4451/path"}) {
    hear(Texts::probe("ANY", reply));
    EXPECT_THAT(takeTypes(), ElementsAre("ProbeMatch")) << reply;
  }
}

TEST_F(DiscoveryAnswers, AQuestionWithoutAnIdentifierIsAnsweredEachTimeWithNoneNamed) {
  start();
  std::string const probe =
      Texts::envelope("<ReplyTo>udp://192.0.2.9:4451</ReplyTo>",
                      "<Probe><Criteria><Device><Type>TV</Type></Device></Criteria></Probe>");
  hear(probe);
  hear(probe);
  std::vector<Datagram> const sent = take();
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_THAT(sent[0].text, HasSubstr("<RelatesTo></RelatesTo>"));
}

TEST_F(DiscoveryAnswers, HeaderElementsAreReadByNameInAnyOrder) {
  start();
  hear(
      Texts::envelope("<Other/><ReplyTo>udp://192.0.2.9:4451</ReplyTo>\n  "
                      "<MessageID>m-&amp;-1</MessageID>",
                      "<Probe><Criteria><Device><Type>TV</Type></Device></Criteria></Probe>"));
  EXPECT_THAT(take().at(0).text, HasSubstr("<RelatesTo>m-&-1</RelatesTo>"));
}

TEST_F(DiscoveryAnswers, TheFirstElementOfTheBodyIsTheMessage) {
  start();
  hear(Texts::message("<Bye><Device ID='a'/></Bye><Hello>" + Texts::description("TV", "a") +
                      "</Hello>"));
  EXPECT_EQ(televisions(), "none");
  hear(Texts::message("<Hello>" + Texts::description("TV", "a") +
                      "</Hello><Bye><Device ID='a'/></Bye>"));
  EXPECT_EQ(televisions(), "a");
}

TEST_F(DiscoveryAnswers, OtherMessagesAreLeftAloneWithNoWord) {
  start();
  set.log.clear();
  for (char const* body : {"<Ping/>", "<hello/>", "<HelloWorld/>", "", "text", "<Probes/>"}) {
    hear(Texts::message(body));
  }
  EXPECT_THAT(takeTypes(), IsEmpty());
  EXPECT_EQ(set.log.count(PCRealDebug::Error) + set.log.count(PCRealDebug::Warning) +
                set.log.count(PCRealDebug::Notable),
            0)
      << set.log.dump();
}

TEST_F(DiscoveryAnswers, DescriptionsOfOtherTypesAreLeftAlone) {
  start();
  for (char const* type : {"ANY", "tv", "Mobile", "", "FRIDGE"}) {
    hear(Texts::hello(type, "a"));
    hear(Texts::probeMatch(type, "a"));
  }
  EXPECT_EQ(read("/Zelv/Devices"), "<Devices/>");
}

// As another set would hear it, too.
TEST_F(DiscoveryAnswers, ANameThatIsMarkupGoesOutAsItIsAndReceiversCannotReadTheMessage) {
  struct Case {
    char const* file;
    char const* sent;
  };
  for (Case const& name :
       {Case{"Tom &lt;3", "<Name>Tom <3</Name>"}, Case{"&lt;b>", "<Name><b></Name>"}}) {
    start({.name = name.file});
    service->onData("", "", nullptr, GUID::nullGUID);
    std::string const hello = take().at(0).text;
    EXPECT_THAT(hello, HasSubstr(name.sent));
    hear(hello);
    EXPECT_EQ(read("/Zelv/Devices"), "<Devices/>") << hello;
    end();
  }
  start({.name = "Tom &amp; Jerry"});
  service->onData("", "", nullptr, GUID::nullGUID);
  EXPECT_THAT(take().at(0).text, HasSubstr("<Name>Tom & Jerry</Name>"));
}

// The listener's thread is this one here: it must be free at once, although the peer never answers.
TEST_F(DiscoveryAnswers, AnAnswerOverTcpHoldsUpNobody) {
  Peer listening(Peer::Stream);
  std::uint16_t const tcp = Peer::freePort(Peer::Stream);
  ASSERT_TRUE(listening.listen(tcp));
  start();
  std::string const probe = Texts::probe("ANY", "tcp://127.0.0.1:" + std::to_string(tcp));
  hear(probe);
  // Before anything is acknowledged, others are served and readers get their list.
  hear(Texts::hello("TV", "a"));
  EXPECT_EQ(televisions(), "a");
  Peer connection = listening.accept();
  std::string const text = connection.receive();
  EXPECT_EQ(Texts::typeOf(text), "ProbeMatch");
  EXPECT_EQ(header(text, "RelatesTo"), header(probe, "MessageID"));
  EXPECT_TRUE(connection.send("\n"));
  EXPECT_TRUE(connection.seesEnd());
}

TEST_F(DiscoveryAnswers, AResolveMatchGoesOverTcpAsWell) {
  Peer listening(Peer::Stream);
  std::uint16_t const tcp = Peer::freePort(Peer::Stream);
  ASSERT_TRUE(listening.listen(tcp));
  start();
  hear(Texts::resolve(cLocalId, "tcp://127.0.0.1:" + std::to_string(tcp) + "/"));
  Peer connection = listening.accept();
  EXPECT_EQ(Texts::typeOf(connection.receive()), "ResolveMatch");
  connection.send("\n");
}

TEST_F(DiscoveryAnswers, AHundredQuestionsToBeAnsweredOverTcpLeaveABoundedNumberWaiting) {
  Peer listening(Peer::Stream);
  std::uint16_t const tcp = Peer::freePort(Peer::Stream);
  ASSERT_TRUE(listening.listen(tcp));
  start();
  std::string const reply = "tcp://127.0.0.1:" + std::to_string(tcp);
  hear(Texts::probe("ANY", reply));
  Peer connection = listening.accept();  // its answer is under way from here on
  for (int count = 0; count < 100; ++count) {
    hear(Texts::probe("ANY", reply));
  }
  EXPECT_EQ(set.log.countContaining(PCRealDebug::Warning, "AnswerSender::offer: "), 36);
  // The end waits for the one under way, and for no other: nobody is there for them.
  listening.close();
  std::thread ending([this] { service->terminate(); });
  EXPECT_EQ(Texts::typeOf(connection.receive()), "ProbeMatch");
  connection.send("\n");
  ending.join();
}

TEST_F(DiscoveryAnswers, AnotherProtocolInTheReplyAddressGetsNone) {
  start();
  hear(Texts::probe("ANY", "http://192.0.2.9:80/"));
  EXPECT_THAT(takeTypes(), IsEmpty());
  EXPECT_EQ(
      set.log.count(PCRealDebug::Error, "NetworkAdapter::send: Not a valid Transport Protocol !!."),
      1);
}

}  // namespace
}  // namespace Zelv
