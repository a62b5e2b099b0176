#include "zelv/core/AssetFileSender.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "zelv/core/AssetRequestHandler.h"
#include "zelv/core/testing/AssetPortTest.h"
#include "zelv/platform/CCmSocket.h"

namespace Zelv {
namespace {

using Platform::Fake::Logged;
using Testing::AssetPortTest;
using Testing::Peer;

/// Files as clients get them.
class AssetFileSending : public AssetPortTest {
 protected:
  /// The response of a provider that sends these files.
  std::string sent(std::list<AssetFileObject> const& aFiles, bool aExpected = true) {
    provider.reactWith([this, aFiles, aExpected](AssetRequestHandler& handler) {
      EXPECT_EQ(handler.sendFiles(aFiles, false), aExpected) << log.dump();
    });
    return served(post(cEnvelope));
  }

  /// Sends a file of 16 MiB, more than fits between two ends of a connection, and does something
  /// when its first bytes are there. @return the whole response.
  std::string disturbed(std::string const& aPath, std::function<void()> const& aDisturb) {
    std::filesystem::resize_file(aPath, cLong);
    provider.reactWith(
        [aPath](AssetRequestHandler& handler) { handler.sendFiles({object(aPath)}, false); });
    auto const listener = listen();
    Peer peer = connect();
    EXPECT_TRUE(peer.send(post(cEnvelope)));
    std::string response = peer.receive();
    aDisturb();
    return response + peer.receiveAll();
  }

  static std::size_t bodySize(std::string const& aResponse) {
    std::string const head = "Content-Length: " + std::to_string(cLong) + "\r\n\r\n";
    return aResponse.size() - (aResponse.find(head) + head.size());
  }

  static constexpr std::size_t cLong = 16U << 20;
};

class AssetFileSize : public AssetFileSending, public ::testing::WithParamInterface<std::size_t> {};

TEST_P(AssetFileSize, ArrivesByteForByte) {
  std::string const content = bytes(GetParam());
  std::string const response = sent({object(file("a.png", content))});
  // Not EXPECT_EQ, which would print both.
  EXPECT_TRUE(response == answer(response, filePart(response, "image/png", "id", content)));
}

INSTANTIATE_TEST_SUITE_P(Sizes, AssetFileSize,
                         ::testing::Values(0, 1, 8191, 8192, 8193, 16384, 1U << 20));

TEST_F(AssetFileSending, GoesThroughPiecesOf8192BytesAndEndsAnEvenOneWithAnEmptyPiece) {
  std::string const path = file("a.png", bytes(16384));
  auto const listener = listen();
  provider.reactWith([&](AssetRequestHandler& handler) {
    int const sends = FakeSockets::Count(FakeSockets::Send);
    handler.sendFiles({object(path)}, false);
    // The head of the part, two pieces, the empty one, the end of the part.
    EXPECT_EQ(FakeSockets::Count(FakeSockets::Send), sends + 5);
  });
  exchange(post(cEnvelope));
}

TEST_F(AssetFileSending, UsesADefaultForUnknownTypes) {
  std::string const response = sent({object(file("a.xyz", "X")), object(file("a", "Y"))});
  EXPECT_EQ(response, answer(response, filePart(response, "application/binary", "id", "X") +
                                           filePart(response, "application/binary", "id", "Y")));
  EXPECT_EQ(log.count(PCRealDebug::Warning,
                      "AssetRequestHandler::sendFiles: mimeType not found. Using "
                      "'application/binary' default."),
            2);
}

TEST_F(AssetFileSending, RefusesAnEmptyList) {
  std::string const response = sent({}, false);
  EXPECT_EQ(response, answer(response));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "AssetRequestHandler::sendFiles: aFilePaths list is Empty!!."));
}

TEST_F(AssetFileSending, RefusesPathsOf500CharactersAndMore) {
  std::string path = file("a.png", "X");
  path.insert(path.rfind('/'), std::string(499 - path.size(), '/'));
  std::string response = sent({object(path)});
  EXPECT_EQ(response, answer(response, filePart(response, "image/png", "id", "X")));

  path.insert(path.rfind('/'), "/");
  response = sent({object(path)}, false);
  EXPECT_EQ(response, answer(response));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "AssetRequestHandler::sendFiles: file name len: 500 too long, fail"));
}

TEST_F(AssetFileSending, StopsAtAFileThatCannotBeOpened) {
  std::string const good = file("a.png", "X");
  std::string const bad = directories.writable() + "none.png";
  std::string const response = sent({object(good), object(bad), object(good)}, false);
  EXPECT_EQ(response, answer(response, filePart(response, "image/png", "id", "X")));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "AssetRequestHandler::sendFiles: Failed to Open the file: " + bad));
}

TEST_F(AssetFileSending, OpensRegularFilesBelowTheirPackageAlone) {
  file("a.png", "X");
  std::filesystem::create_directory(directories.writable() + "b.png");
  for (std::string const& path :
       {directories.writable() + "b.png", std::string("/dev/zero"), std::string("/dev/null"),
        std::string(), directories.writable() + "b.png/../a.png"}) {
    log.clear();
    std::string const response = sent({object(path)}, false);
    EXPECT_EQ(response, answer(response)) << path;
    EXPECT_THAT(log, Logged(PCRealDebug::Error,
                            "AssetRequestHandler::sendFiles: Failed to Open the file: " + path));
  }
}

// Who puts a link beside the files of a package says where the file is.
TEST_F(AssetFileSending, FollowsALinkToARegularFileAlone) {
  std::string const link = directories.writable() + "link.png";
  std::filesystem::create_symlink(file("a.png", "X"), link);
  std::string response = sent({object(link)});
  EXPECT_EQ(response, answer(response, filePart(response, "image/png", "id", "X")));
  for (char const* target : {"/dev/zero", "/", "nowhere"}) {
    std::filesystem::remove(link);
    std::filesystem::create_symlink(target, link);
    log.clear();
    response = sent({object(link)}, false);
    EXPECT_EQ(response, answer(response)) << target;
    EXPECT_THAT(log, Logged(PCRealDebug::Error,
                            "AssetRequestHandler::sendFiles: Failed to Open the file: " + link));
  }
}

TEST_F(AssetFileSending, StopsWhenTheSizeCannotBeHad) {
  std::string const path = file("a.png", "X");
  struct {
    int call;
    char const* text;
  } const cases[] = {
      {1, "AssetRequestHandler::sendFiles: Failed to get file size for: "},
      {2, "AssetRequestHandler::sendFiles: Failed to move file pointer to the beginning for: "}};
  for (auto const& one : cases) {
    provider.reactWith([&](AssetRequestHandler& handler) {
      FakeFiles::FailNth(FakeFiles::Seek, one.call);
      EXPECT_FALSE(handler.sendFiles({object(path)}, false));
    });
    std::string const response = served(post(cEnvelope));
    EXPECT_EQ(response, answer(response));
    EXPECT_THAT(log, Logged(PCRealDebug::Error, one.text + path));
  }
}

// With a size announced, whatever came next would be taken for the rest of the file.
TEST_F(AssetFileSending, EndsTheAnswerWhenReadingFails) {
  std::string const content = bytes(20000);
  std::string const path = file("a.png", content);
  provider.reactWith([&](AssetRequestHandler& handler) {
    FakeFiles::FailNth(FakeFiles::Read, 2);
    EXPECT_FALSE(handler.sendFiles({object(path)}, false));
    EXPECT_FALSE(handler.sendText("<more/>", true));
  });
  std::string const response = served(post(cEnvelope));
  std::string const whole = answer(response, filePart(response, "image/png", "id", content));
  EXPECT_EQ(response, whole.substr(0, whole.find(content) + 8192));
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error,
                     "AssetRequestHandler::sendFiles: Failed to Read from file:path = " + path));
}

TEST_F(AssetFileSending, StopsWhenTheBodyCannotBeSent) {
  std::string const path = file("a.png", bytes(20000));
  provider.reactWith([&](AssetRequestHandler& handler) {
    FakeSockets::FailNext(FakeSockets::Send, EPIPE, 2);
    EXPECT_FALSE(handler.sendFiles({object(path), object(path)}, false));
  });
  std::string const response = served(post(cEnvelope));
  EXPECT_EQ(response, answer(response));
  EXPECT_EQ(log.count(PCRealDebug::Warning,
                      "AssetRequestHandler::sendFiles: Failed to send file body, errno=Broken "
                      "pipe.\n"),
            1);
}

TEST_F(AssetFileSending, StopsWhenTheEndOfAPartCannotBeSent) {
  std::string const path = file("a.png", "X");
  FakeSockets::FailSendOf("\r\n", ENOBUFS);
  std::string const response = sent({object(path), object(path)}, false);
  EXPECT_EQ(response, answer(response, filePart(response, "image/png", "id", "X", "")));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "AssetRequestHandler::sendFiles: Failed to send file end terminator, "
                          "errno=No buffer space available.\n"));
}

TEST_F(AssetFileSending, LogsTheExpectedSizeBesideTheRealOne) {
  sent({object(file("a.png", "abc"))});
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "AssetRequestHandler::sendFiles: expected size: 3, real size: 3"));
}

// Files that change while they are sent

TEST_F(AssetFileSending, EndsTheAnswerWhenTheFileShrinks) {
  std::string const path = file("a.png", "");
  std::string const response = disturbed(path, [&] { std::filesystem::resize_file(path, 100000); });
  EXPECT_LT(bodySize(response), cLong);
  EXPECT_EQ(response.find("--" + boundaryOf(response) + "--"), std::string::npos);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "AssetRequestHandler::sendFiles: The file ended early, so does the "
                          "answer: " +
                              path));
}

TEST_F(AssetFileSending, SendsOfAFileThatGrowsWhatItAnnounced) {
  std::string const path = file("a.png", "");
  std::string const response =
      disturbed(path, [&] { std::filesystem::resize_file(path, 2 * cLong); });
  EXPECT_TRUE(response ==
              answer(response, filePart(response, "image/png", "id", std::string(cLong, '\0'))));
}

TEST_F(AssetFileSending, SendsAllOfAFileThatIsRemovedMeanwhile) {
  std::string const path = file("a.png", "");
  std::string const response = disturbed(path, [&] { std::filesystem::remove(path); });
  EXPECT_TRUE(response ==
              answer(response, filePart(response, "image/png", "id", std::string(cLong, '\0'))));
}

TEST_F(AssetFileSending, EndsInOrderWhenTheClientLeavesInTheMiddle) {
  std::string const path = file("a.png", "");
  std::filesystem::resize_file(path, cLong);
  provider.reactWith([&](AssetRequestHandler& handler) {
    EXPECT_FALSE(handler.sendFiles({object(path)}, false));
    EXPECT_FALSE(handler.sendText("<more/>", true));
  });
  auto const listener = listen();
  {
    Peer peer = connect();
    ASSERT_TRUE(peer.send(post(cEnvelope)));
    ASSERT_FALSE(peer.receive().empty());
  }
  EXPECT_TRUE(log.waitFor(PCRealDebug::Warning,
                          "AssetRequestHandler::startListener: Failed to send TCP packet, "
                          "errno=Broken pipe.\n"));
}

}  // namespace
}  // namespace Zelv
