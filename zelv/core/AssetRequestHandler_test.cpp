#include "zelv/core/AssetRequestHandler.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include "zelv/core/MimeTypes.h"
#include "zelv/core/testing/AssetPortTest.h"
#include "zelv/platform/fake/FakeEntropy.h"

namespace Zelv {
namespace {

using Platform::Fake::Logged;
using Testing::AssetPortTest;
using ::testing::HasSubstr;
using Testing::Peer;

constexpr char const* cNotReceived =
    "AssetRequestHandler::startListener: Failed to receive TCP packet, errno=Success.\n";

constexpr char const* cBadRequest =
    "HTTP/1.1 400 Bad Request\r\n"
    "Content-Type: text/xml; charset=utf-8\r\n"
    "Content-Length: 52\r\n"
    "Connection: close\r\n"
    "\r\n"
    "<?xml version=\"1.0\"?>\n<error>400 Bad Request</error>";

class AssetExchange : public AssetPortTest {};

// The answer

TEST_F(AssetExchange, AnswersAPostWithOneResponseOfSeveralParts) {
  std::string const picture = file("a.png", "PICTURE");
  std::string const other = file("b.JPG", "OTHER");
  provider.reactWith([&](AssetRequestHandler& handler) {
    EXPECT_TRUE(handler.sendText("<What/>", false));
    EXPECT_TRUE(handler.sendFiles({object(picture, "1"), object(other, "2")}, true));
  });
  std::string const response = served(post(cEnvelope));
  EXPECT_EQ(response,
            answer(response, textPart(response, "<What/>") +
                                 filePart(response, "image/png", "1", "PICTURE") +
                                 filePart(response, "image/jpeg", "2", "OTHER", "\r\n\r\n")));
  EXPECT_EQ(provider.requests(), std::vector<std::string>{cRequest});
}

TEST_F(AssetExchange, SeparatesThePartsByAnIdentifierThatTheProviderIsGiven) {
  auto const listener = listen();
  std::string const first = boundaryOf(exchange(post(cEnvelope)));
  std::string const second = boundaryOf(exchange(post(cEnvelope)));
  EXPECT_EQ(provider.transactions(), (std::vector<std::string>{first, second}));
  EXPECT_NE(first, second);
  EXPECT_EQ(Infrastructure::GUID(first).toString(), first);
}

TEST_F(AssetExchange, AnswersWithoutPartsWhenTheProviderSendsNone) {
  std::string const response = served(post(cEnvelope));
  EXPECT_EQ(response, answer(response));
}

TEST_F(AssetExchange, EndsOnlyTheLastFileOfTheLastListWithAnEmptyLine) {
  std::string const path = file("a.png", "X");
  provider.reactWith([&](AssetRequestHandler& handler) {
    handler.sendFiles({object(path), object(path)}, false);
    handler.sendFiles({object(path), object(path)}, true);
  });
  std::string const response = served(post(cEnvelope));
  std::string const part = filePart(response, "image/png", "id", "X");
  EXPECT_EQ(response, answer(response, part + part + part + part + "\r\n"));
}

TEST_F(AssetExchange, GivesTheFlagOfATextNoEffect) {
  provider.reactWith([](AssetRequestHandler& handler) {
    handler.sendText("a", false);
    handler.sendText("a", true);
  });
  std::string const response = served(post(cEnvelope));
  EXPECT_EQ(response, answer(response, textPart(response, "a") + textPart(response, "a")));
}

TEST_F(AssetExchange, SendsEachPieceInOneCall) {
  provider.reactWith([](AssetRequestHandler& handler) { handler.sendText("<a/>", true); });
  auto const listener = listen();
  Peer peer = connect();
  int const before = FakeSockets::Count(FakeSockets::Send);
  ASSERT_TRUE(peer.send(post(cEnvelope)));
  peer.receiveAll();
  // That of the peer, the head, the text, the closing delimiter.
  EXPECT_EQ(FakeSockets::Count(FakeSockets::Send), before + 4);
}

TEST_F(AssetExchange, AnswersAGetOfAnyUriWithThePictureOfTheBuiltInPackage) {
  auto const listener = listen();
  for (std::string const uri : {"/", "/tv.png", "http://tv/../../etc/passwd?x=y", "*"}) {
    std::string const response = exchange("GET " + uri + " HTTP/1.1\r\nHost: tv\r\n\r\n");
    EXPECT_EQ(response, answer(response)) << uri;
  }
  EXPECT_EQ(provider.requests(),
            std::vector<std::string>(4,
                                     "<AssetRequest ID='e3035622-f6ff-46cb-ada6-64fb3b616f08'>"
                                     "<Asset name='TVImage'/></AssetRequest>"));
}

TEST_F(AssetExchange, AnswersAGetWithoutHost) {
  std::string const response = served("GET / HTTP/1.0\r\n\r\n");
  EXPECT_EQ(response, answer(response));
}

TEST_F(AssetExchange, TakesTheRequestOfAPostUpToItsFirstZeroByte) {
  std::string body = cEnvelope;
  body += std::string(1, '\0') + "<<<<";
  std::string const response = served(post(body));
  EXPECT_EQ(response, answer(response));
  EXPECT_EQ(provider.requests(), std::vector<std::string>{cRequest});
}

TEST_F(AssetExchange, HandsTheRequestOnWithItsEntitiesUnescaped) {
  served(post("<Envelope><Body><AssetRequest ID='&lt;1&gt;'/></Body></Envelope>"));
  EXPECT_EQ(provider.requests(), std::vector<std::string>{"<AssetRequest ID='<1>'/>"});
}

TEST_F(AssetExchange, TakesARequestByteByByte) {
  auto const listener = listen();
  Peer peer = connect();
  int const before = FakeSockets::Count(FakeSockets::Receive);
  int sent = 0;
  std::string const request = post(cEnvelope);
  // A first piece of one to four bytes is looked at in a way of its own.
  ASSERT_TRUE(peer.send(request.substr(0, 8)));
  for (char const byte : request.substr(8)) {
    ++sent;
    ASSERT_TRUE(comesTo([&] { return FakeSockets::Count(FakeSockets::Receive) > before + sent; }));
    ASSERT_TRUE(peer.send(std::string(1, byte)));
  }
  std::string const response = peer.receiveAll();
  EXPECT_EQ(response, answer(response));
}

TEST_F(AssetExchange, TakesABodyOfUpTo512KiB) {
  std::string body = cEnvelope;
  body.resize(524288, ' ');
  std::string const response = served(post(body));
  EXPECT_EQ(response, answer(response));
}

TEST_F(AssetExchange, AnswersEvenThoughAClientSendsMoreThanItAnnounced) {
  std::string const response = served(post(cEnvelope) + std::string(20000, 'x'));
  EXPECT_EQ(response, answer(response));
}

// Bad requests

struct BadRequest {
  char const* name;
  std::string request;
  char const* warning;
};

class BadAssetRequest : public AssetPortTest, public ::testing::WithParamInterface<BadRequest> {};

TEST_P(BadAssetRequest, GetsTheOnePageThatGoesOut) {
  EXPECT_EQ(served(GetParam().request), cBadRequest);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning, GetParam().warning));
  EXPECT_TRUE(provider.requests().empty());
}

constexpr char const* cNoXml =
    "AssetRequestHandler::startListener: Failed to read request into HDB, not XML?";
constexpr char const* cNoChunk =
    "AssetRequestHandler::startListener: Failed to read Asset request chunk from HDB or was not "
    "found";

std::string postOf(std::string const& aBody) {
  return "POST / HTTP/1.1\r\nHost: tv\r\nContent-Type: text/xml\r\nContent-Length: " +
         std::to_string(aBody.size()) + "\r\n\r\n" + aBody;
}

INSTANTIATE_TEST_SUITE_P(
    Requests, BadAssetRequest,
    ::testing::Values(
        BadRequest{"NoXml", postOf("no XML"), cNoXml},
        BadRequest{"NoAssetRequest", postOf("<Envelope><Body/></Envelope>"), cNoChunk},
        BadRequest{"AssetRequestElsewhere", postOf("<AssetRequest ID='1'/>"), cNoChunk},
        BadRequest{"NoHost", "POST / HTTP/1.1\r\nContent-Type: a/b\r\nContent-Length: 3\r\n\r\nabc",
                   cNoXml},
        BadRequest{"LengthOfZero",
                   "POST / HTTP/1.1\r\nHost: tv\r\nContent-Type: a/b\r\nContent-Length: 0\r\n\r\n",
                   cNoXml},
        BadRequest{"NegativeLength",
                   "POST / HTTP/1.1\r\nHost: tv\r\nContent-Type: a/b\r\nContent-Length: -5\r\n\r\n",
                   cNoXml},
        BadRequest{"NoContentType", "POST / HTTP/1.1\r\nHost: tv\r\nContent-Length: 4\r\n\r\n<a/>",
                   cNoXml}),
    [](auto const& aInfo) { return aInfo.param.name; });

TEST_F(AssetExchange, AnswersWithTheBadRequestPageWhenTheProviderThrows) {
  provider.reactWith([](AssetRequestHandler& handler) {
    handler.sendText("<a/>", false);
    throw std::runtime_error("no such thing");
  });
  std::string const response = served(post(cEnvelope));
  std::string const head = answer(response).substr(0, answer(response).find("\r\n\r\n") + 4);
  EXPECT_EQ(response, head + textPart(response, "<a/>") + cBadRequest);
}

TEST_F(AssetExchange, AnswersWithTheBadRequestPageWhateverTheProviderThrows) {
  provider.reactWith([](AssetRequestHandler&) { throw 7; });
  EXPECT_THAT(served(post(cEnvelope)), ::testing::EndsWith(cBadRequest));
}

// Requests that get nothing

struct Silenced {
  char const* name;
  std::string request;
  char const* page;
};

class SilencedRequest : public AssetPortTest, public ::testing::WithParamInterface<Silenced> {};

TEST_P(SilencedRequest, SeesTheConnectionEndWithoutAByte) {
  EXPECT_EQ(served(GetParam().request), "");
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          HasSubstr(std::string("AssetRequestHandler::startListener: Closing "
                                                "without sending: ") +
                                    GetParam().page + "\r\n")));
  EXPECT_TRUE(provider.requests().empty());
}

std::string headOf(std::string const& aHeaders) {
  return "POST / HTTP/1.1\r\nHost: tv\r\n" + aHeaders + "\r\n\r\n";
}

constexpr char const* cNotAllowed = "HTTP/1.1 405 Method Not Allowed";
constexpr char const* cRefused = "HTTP/1.1501 Not Implemented";

INSTANTIATE_TEST_SUITE_P(
    Requests, SilencedRequest,
    ::testing::Values(
        Silenced{"Head", "HEAD / HTTP/1.1\r\nHost: tv\r\n\r\n", cNotAllowed},
        Silenced{"Put", "PUT / HTTP/1.1\r\nHost: tv\r\n\r\n", cNotAllowed},
        Silenced{"GetInLowerCase", "get / HTTP/1.1\r\nHost: tv\r\n\r\n", cNotAllowed},
        Silenced{"NoRequestLine", "\r\nHost: tv\r\n\r\n", "HTTP/1.1400 Bad Request"},
        Silenced{"TooLong", headOf("Content-Type: a/b\r\nContent-Length: 524289"), cRefused},
        Silenced{"NoLength", headOf("Content-Type: a/b"), cRefused},
        Silenced{"Chunked", headOf("Content-Type: a/b\r\nTransfer-Encoding: chunked"), cRefused},
        Silenced{"Multipart", headOf("Content-Type: multipart/related\r\nContent-Length: 3"),
                 cRefused}),
    [](auto const& aInfo) { return aInfo.param.name; });

// Peers that leave

class EarlyEnd : public AssetPortTest, public ::testing::WithParamInterface<std::string> {};

TEST_P(EarlyEnd, EndsTheConnectionWithOneLineAndNothingSent) {
  auto const listener = listen();
  Peer peer = connect();
  if (!GetParam().empty()) {
    ASSERT_TRUE(peer.send(GetParam()));
  }
  int const before = FakeSockets::Count(FakeSockets::Send);
  peer.finishSending();
  EXPECT_EQ(peer.receiveAll(), "");
  EXPECT_EQ(log.count(PCRealDebug::Warning, cNotReceived), 1) << log.dump();
  EXPECT_EQ(FakeSockets::Count(FakeSockets::Send), before);
  EXPECT_EQ(exchange(post(cEnvelope)).substr(0, 12), "HTTP/1.1 202");
}

INSTANTIATE_TEST_SUITE_P(Pieces, EarlyEnd,
                         ::testing::Values("", "G", "GET / HTTP/1.1\r\n",
                                           "GET / HTTP/1.1\r\nHost: tv\r\n",
                                           "POST / HTTP/1.1\r\nHost: tv\r\nContent-Type: a/b\r\n"
                                           "Content-Length: 10\r\n\r\n123"));

TEST_F(AssetExchange, ClosesWhenReceivingFails) {
  auto const listener = listen();
  Peer peer = connect();
  ASSERT_TRUE(comesTo([] { return FakeSockets::Count(FakeSockets::Receive) > 0; }));
  // The wait under way is a real one; what comes after it fails.
  FakeSockets::FailNext(FakeSockets::Receive, ECONNRESET);
  ASSERT_TRUE(peer.send("GET"));
  EXPECT_TRUE(log.waitFor(PCRealDebug::Warning,
                          "AssetRequestHandler::startListener: Failed to receive TCP packet, "
                          "errno=Connection reset by peer.\n"));
  EXPECT_EQ(peer.receiveAll(), "");
}

TEST_F(AssetExchange, GoesOnWhenReceivingIsInterrupted) {
  auto const listener = listen();
  Peer peer = connect();
  ASSERT_TRUE(comesTo([] { return FakeSockets::Count(FakeSockets::Receive) == 1; }));
  FakeSockets::FailNext(FakeSockets::Receive, EINTR);
  ASSERT_TRUE(peer.send("GET / HTTP"));
  ASSERT_TRUE(comesTo([] { return FakeSockets::Count(FakeSockets::Receive) == 3; }));
  ASSERT_TRUE(peer.send("/1.1\r\n\r\n"));
  std::string const response = peer.receiveAll();
  EXPECT_EQ(response, answer(response));
  EXPECT_EQ(log.countContaining(PCRealDebug::Warning, "Failed to receive"), 0);
}

TEST_F(AssetExchange, BoundsHowLongEitherWayStandsStill) {
  served(post(cEnvelope));
  long const patience[2] = {600, 0};
  std::string const value(reinterpret_cast<char const*>(patience), sizeof patience);
  std::vector<Platform::Fake::SocketOption> const options = FakeSockets::TakeOptions();
  EXPECT_THAT(options, ::testing::Contains(Platform::Fake::SocketOption{1, 20, value}));
  EXPECT_THAT(options, ::testing::Contains(Platform::Fake::SocketOption{1, 21, value}));
}

// Sending that fails

TEST_F(AssetExchange, EndsWhenTheHeadCannotBeSent) {
  // So that all boundaries are alike.
  Platform::Fake::FakeEntropy::Script(std::string(1000, 'x'));
  auto const listener = listen();
  std::string const first = exchange(post(cEnvelope));
  FakeSockets::FailSendOf(first.substr(0, first.find("\r\n\r\n") + 4), EPIPE);
  EXPECT_EQ(exchange(post(cEnvelope)), "");
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "AssetRequestHandler::startListener: Failed to send TCP packet, "
                          "errno=Broken pipe.\n"));
  EXPECT_EQ(provider.requests().size(), 1U);
}

TEST_F(AssetExchange, EndsWhenTheClosingDelimiterCannotBeSent) {
  provider.reactWith(
      [](AssetRequestHandler&) { FakeSockets::FailNext(FakeSockets::Send, ECONNRESET); });
  std::string const response = served(post(cEnvelope));
  EXPECT_EQ(response + "--" + boundaryOf(response) + "--\r\n", answer(response));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "AssetRequestHandler::startListener: Failed to send TCP packet, "
                          "errno=Connection reset by peer.\n"));
}

TEST_F(AssetExchange, GoesOnAfterATextThatCouldNotBeSent) {
  provider.reactWith([](AssetRequestHandler& handler) {
    FakeSockets::FailNext(FakeSockets::Send, ENOBUFS);
    EXPECT_FALSE(handler.sendText("<a/>", false));
    EXPECT_TRUE(handler.sendText("<b/>", false));
  });
  std::string const response = served(post(cEnvelope));
  EXPECT_EQ(response, answer(response, textPart(response, "<b/>")));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "AssetRequestHandler::sendText: Failed to send TCP packet, errno=No "
                          "buffer space available.\n"));
}

TEST_F(AssetExchange, ClosesWhenAClientTookNothingForTenMinutes) {
  provider.reactWith([](AssetRequestHandler& handler) {
    FakeSockets::FailNext(FakeSockets::Send, EAGAIN);
    EXPECT_FALSE(handler.sendText("<a/>", false));
    EXPECT_FALSE(handler.sendText("<b/>", false));
  });
  auto const listener = listen();
  std::string const response = exchange(post(cEnvelope));
  EXPECT_EQ(response + "--" + boundaryOf(response) + "--\r\n", answer(response));
  EXPECT_TRUE(log.waitFor(PCRealDebug::Warning,
                          "AssetRequestHandler::sendText: Failed to send TCP packet, "
                          "errno=Resource temporarily unavailable.\n"));
  EXPECT_TRUE(log.waitFor(PCRealDebug::Warning,
                          "AssetRequestHandler::sendText: Failed to send TCP packet, "
                          "errno=Broken pipe.\n"));
}

TEST_F(AssetExchange, RefusesEmptyTexts) {
  provider.reactWith(
      [](AssetRequestHandler& handler) { EXPECT_FALSE(handler.sendText("", true)); });
  std::string const response = served(post(cEnvelope));
  EXPECT_EQ(response, answer(response));
  EXPECT_THAT(
      log, Logged(PCRealDebug::Error, "AssetRequestHandler::sendText: aText string is Empty!!."));
}

TEST_F(AssetExchange, SendsATextOfManyPackets) {
  std::string const text = bytes(3 << 20);
  provider.reactWith(
      [&](AssetRequestHandler& handler) { EXPECT_TRUE(handler.sendText(text, true)); });
  std::string const response = served(post(cEnvelope));
  EXPECT_TRUE(response == answer(response, textPart(response, text)));
}

// The owner

class AssetRequestHandlerTest : public AssetPortTest {
 protected:
  AssetRequestHandler handler;
};

TEST_F(AssetRequestHandlerTest, NeedsAProviderAndASocket) {
  EXPECT_FALSE(handler.initialize(0, nullptr));
  EXPECT_FALSE(handler.initialize(-1, &provider));
  EXPECT_EQ(
      log.count(PCRealDebug::Error, "AssetRequestHandler::initialize: Invalid provider or socket."),
      2);
}

TEST_F(AssetRequestHandlerTest, NeedsTheTypesOfFiles) {
  directories.putReadOnly("Mime.xml", "no XML");
  EXPECT_FALSE(handler.initialize(12345, &provider));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "AssetRequestHandler::initialize: Error!! Mime.xml file not found in r/w "
                          "area."));
}

TEST_F(AssetRequestHandlerTest, TakesTheTypeOfAFileFromItsExtension) {
  // A number that nobody has: only the types are wanted.
  ASSERT_TRUE(handler.initialize(1 << 20, &provider));
  struct {
    char const* path;
    char const* type;
    char const* complaint;
  } const cases[] = {
      {"/a/b.png", "image/png", nullptr},
      {"/a/b.PnG", "image/png", nullptr},
      {"/a/b.jpg.png", "image/png", nullptr},
      {".png", "image/png", nullptr},
      {"/a/b.none", "", nullptr},
      {"/a/b", "", "AssetRequestHandler::getMimeType: File extension not found!!!!!"},
      {"/a/b.", "", "AssetRequestHandler::getMimeType: Mime Type not found!!!!!"},
      {"/a/b.gif", "", "AssetRequestHandler::getMimeType: Mime Type not found!!!!!"},
      {"/a.png/b", "", "AssetRequestHandler::getMimeType: Mime Type not found!!!!!"},
      {"a.\"]|*", "", "AssetRequestHandler::getMimeType: Mime Type not found!!!!!"},
  };
  for (auto const& one : cases) {
    log.clear();
    EXPECT_EQ(handler.getMimeType(one.path), one.type) << one.path;
    EXPECT_EQ(log.count(PCRealDebug::Error), one.complaint ? 1 : 0) << one.path;
    if (one.complaint) {
      EXPECT_THAT(log, Logged(PCRealDebug::Error, one.complaint)) << one.path;
    }
  }
}

TEST_F(AssetExchange, IsCutShortWhenTheOwnerGivesItUp) {
  std::string message;
  provider.reactWith([&](AssetRequestHandler& handler) {
    handler.giveUp();
    try {
      handler.sendText("<a/>", false);
    } catch (std::runtime_error const& error) {
      message = error.what();
    }
    handler.sendFiles({object("none")}, true);
  });
  std::string const response = served(post(cEnvelope));
  EXPECT_EQ(message, "AssetRequestHandler: the connection was given up");
  EXPECT_EQ(response.find("--"), std::string::npos);
}

}  // namespace
}  // namespace Zelv
