#include "apps/zelvctl/HttpPost.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <memory>

#include "apps/zelvctl/Loop.h"
#include "apps/zelvctl/testing/FakeHttpServer.h"

namespace ZelvCtl {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Recorder : public HttpPost::Receiver {
 public:
  void onHead(long aStatus, std::string const& aContentType) override {
    text += std::to_string(aStatus) + " " + aContentType + ": ";
  }
  bool onData(std::string_view aBytes) override {
    text += aBytes;
    if (text.find("fault") != std::string::npos) {
      throw std::runtime_error("fault");
    }
    return text.find("enough") == std::string::npos;
  }

  std::string text;
};

class HttpPostTest : public testing::Test {
 protected:
  /// Waits for the end. @return what finish() throws.
  std::string resultOf(HttpPost const& aPost) {
    Loop::End const end =
        mLoop.run(Loop::Clock::now() + std::chrono::seconds(20), [&] { return aPost.isOver(); });
    EXPECT_EQ(end, Loop::Done);
    try {
      aPost.finish();
      return "";
    } catch (HttpPost::Error const& error) {
      return std::string("Error: ") + error.what();
    } catch (std::runtime_error const& error) {
      return error.what();
    }
  }

  std::string resultOf(FakeHttpServer const& aServer, std::string const& aText = "<x/>") {
    HttpPost const post(aServer.url(), aText, mRecorder, mLoop.bell());
    return resultOf(post);
  }

  /// From a server that sends these bytes and closes.
  std::string resultOf(std::string const& aAnswer) {
    FakeHttpServer const server(
        [&](std::string const&, FakeHttpServer::Connection const& aConnection) {
          aConnection.send(aAnswer);
        });
    return resultOf(server);
  }

  Bell mStop;
  Loop mLoop{mStop.descriptor()};
  Recorder mRecorder;
};

TEST_F(HttpPostTest, SendsATextAsSetsReadIt) {
  FakeHttpServer server([](std::string const&, FakeHttpServer::Connection const& aConnection) {
    aConnection.send("HTTP/1.1 202 Accepted\r\nContent-Type: a/b; c=d\r\n\r\nbytes");
  });
  std::string const text = "<x>" + std::string(2000000, 'x') + "</x>";
  EXPECT_EQ(resultOf(server, text), "");
  EXPECT_EQ(mRecorder.text, "202 a/b; c=d: bytes");
  std::string const request = server.requests().at(0);
  std::string const head = request.substr(0, request.find("\r\n\r\n") + 2);
  std::string const host = server.url().substr(7);
  EXPECT_THAT(head,
              StartsWith("POST / HTTP/1.1\r\nHost: " + host.substr(0, host.size() - 1) + "\r\n"));
  EXPECT_THAT(head, HasSubstr("\r\nContent-Type: text/xml; charset=utf-8\r\n"));
  EXPECT_THAT(head, HasSubstr("\r\nContent-Length: 2000007\r\n"));
  EXPECT_THAT(head, Not(HasSubstr("Expect")));
  EXPECT_EQ(request.substr(head.size() + 2), text);
}

TEST_F(HttpPostTest, TellsOfAnAnswerWithoutBody) {
  EXPECT_EQ(resultOf("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n"), "");
  EXPECT_EQ(mRecorder.text, "400 : ");
}

TEST_F(HttpPostTest, FailsWhereNobodyServes) {
  Descriptor const socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(::bind(socket.number(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  socklen_t size = sizeof address;
  ::getsockname(socket.number(), reinterpret_cast<sockaddr*>(&address), &size);
  HttpPost const post("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/", "",
                      mRecorder, mLoop.bell());
  EXPECT_THAT(resultOf(post), StartsWith("Error: Failed to connect to 127.0.0.1 port "));
}

TEST_F(HttpPostTest, FailsWhenTheConnectionEndsWithoutAWord) {
  EXPECT_EQ(resultOf(""), "Error: Empty reply from server");
  EXPECT_EQ(mRecorder.text, "");
}

TEST_F(HttpPostTest, FailsWhenLessComesThanWasPromised) {
  EXPECT_EQ(resultOf("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc"),
            "Error: transfer closed with 7 bytes remaining to read");
  EXPECT_EQ(mRecorder.text, "200 : abc");
}

TEST_F(HttpPostTest, FailsOnWhatIsNoHttp) {
  EXPECT_THAT(resultOf("SSH-2.0-x\r\n"), StartsWith("Error: "));
  EXPECT_EQ(mRecorder.text, "");
}

TEST_F(HttpPostTest, PassesOnWhatTheReceiverThrows) {
  EXPECT_EQ(resultOf("HTTP/1.1 200 OK\r\n\r\nfault"), "fault");
}

TEST_F(HttpPostTest, EndsOnceTheReceiverHasEnough) {
  FakeHttpServer const server(
      [](std::string const&, FakeHttpServer::Connection const& aConnection) {
        aConnection.send("HTTP/1.1 200 OK\r\n\r\nenough");
        EXPECT_TRUE(aConnection.waitForEnd());
      });
  EXPECT_EQ(resultOf(server), "");
  EXPECT_EQ(mRecorder.text, "200 : enough");
}

TEST_F(HttpPostTest, IsGivenUpAtOnceWithItsObject) {
  Bell answered;
  FakeHttpServer const server(
      [&](std::string const&, FakeHttpServer::Connection const& aConnection) {
        answered.ring();
        EXPECT_TRUE(aConnection.waitForEnd());
      });
  auto post = std::make_unique<HttpPost>(server.url(), "", mRecorder, mLoop.bell());
  Loop waiting(answered.descriptor());
  EXPECT_EQ(waiting.run(Loop::Clock::now() + std::chrono::seconds(20), [] { return false; }),
            Loop::Stopped);
  EXPECT_FALSE(post->isOver());
  EXPECT_EQ(post->steps(), 0U);
  EXPECT_FALSE(post->isReceiverBusy());
  post.reset();
}

TEST_F(HttpPostTest, CountsWhatComes) {
  FakeHttpServer const server(
      [](std::string const&, FakeHttpServer::Connection const& aConnection) {
        aConnection.send("HTTP/1.1 200 OK\r\n\r\nabc");
      });
  HttpPost const post(server.url(), "", mRecorder, mLoop.bell());
  EXPECT_EQ(resultOf(post), "");
  EXPECT_GT(post.steps(), 0U);
}

TEST_F(HttpPostTest, BoundsHeaders) {
  FakeHttpServer const server(
      [](std::string const&, FakeHttpServer::Connection const& aConnection) {
        std::string const line = "X: " + std::string(1000, 'x') + "\r\n";
        aConnection.send("HTTP/1.1 200 OK\r\n");
        while (aConnection.send(line)) {
        }
      });
  EXPECT_THAT(resultOf(server), StartsWith("Error: "));
}

TEST_F(HttpPostTest, LetsNothingStandBetween) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  ::setenv("http_proxy", "http://127.0.0.1:1/", 1);
  EXPECT_EQ(resultOf("HTTP/1.1 200 OK\r\n\r\ndirect"), "");
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  ::unsetenv("http_proxy");
  EXPECT_EQ(mRecorder.text, "200 : direct");
}

TEST_F(HttpPostTest, GoesNowhereElse) {
  EXPECT_EQ(resultOf("HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:1/\r\n"
                     "Content-Length: 0\r\n\r\n"),
            "");
  EXPECT_EQ(mRecorder.text, "302 : ");
  EXPECT_THAT(resultOf(HttpPost("file:///etc/passwd", "", mRecorder, mLoop.bell())),
              StartsWith("Error: "));
}

}  // namespace
}  // namespace ZelvCtl
