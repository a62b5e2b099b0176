#include "zelv/core/AssetResponse.h"

#include <gtest/gtest.h>

namespace Zelv {
namespace {

TEST(AssetResponse, SpellsTheBoundaryAsClientsLookForIt) {
  EXPECT_EQ(AssetResponse::head("202 Accepted", "G"),
            "HTTP/1.1 202 Accepted\r\n"
            "Content-Type: multipart/related; boundry=G\r\n"
            "Connection: close\r\n"
            "\r\n");
}

TEST(AssetResponse, WrapsATextAsAPart) {
  EXPECT_EQ(AssetResponse::textPart("G", "<a/>\n"),
            "--G\r\n"
            "Content-Type: application/soap+xml; charset=utf-8\r\n"
            "Content-ID: AssetContents\r\n"
            "\r\n"
            "<a/>\n\r\n");
}

TEST(AssetResponse, AnnouncesAFileWithItsSize) {
  EXPECT_EQ(AssetResponse::filePartHead("G", "image/png", "7", 3),
            "--G\r\n"
            "Content-Type: image/png\r\n"
            "Content-Transfer-Encoding: Little-Endian\r\n"
            "Content-ID: 7\r\n"
            "Content-Length: 3\r\n"
            "\r\n");
}

TEST(AssetResponse, AnnouncesFilesOfMoreThanTwoGibibytes) {
  EXPECT_NE(AssetResponse::filePartHead("G", "a/b", "7", 5368709121)
                .find("Content-Length: 5368709121\r\n"),
            std::string::npos);
}

TEST(AssetResponse, EndsTheLastFileWithOneLineMore) {
  EXPECT_EQ(AssetResponse::filePartEnd(false), "\r\n");
  EXPECT_EQ(AssetResponse::filePartEnd(true), "\r\n\r\n");
}

TEST(AssetResponse, ClosesWithTheDelimiter) {
  EXPECT_EQ(AssetResponse::closingDelimiter("G"), "--G--\r\n");
}

TEST(AssetResponse, ComposesThePagesOfErrors) {
  EXPECT_EQ(AssetResponse::badRequestPage(),
            "HTTP/1.1 400 Bad Request\r\n"
            "Content-Type: text/xml; charset=utf-8\r\n"
            "Content-Length: 52\r\n"
            "Connection: close\r\n"
            "\r\n"
            "<?xml version=\"1.0\"?>\n<error>400 Bad Request</error>");
  EXPECT_EQ(AssetResponse::methodNotAllowedPage(),
            "HTTP/1.1 405 Method Not Allowed\r\n"
            "Content-Type: text/xml; charset=utf-8\r\n"
            "Content-Length: 59\r\n"
            "Connection: close\r\n"
            "\r\n"
            "<?xml version=\"1.0\"?>\n<error>405 Method Not Allowed</error>");
}

TEST(AssetResponse, LeavesNoBlankInTheStatusLineOfARefusal) {
  EXPECT_EQ(AssetResponse::refusedPage("501 Not Implemented"),
            "HTTP/1.1501 Not Implemented\r\n"
            "Content-Type: text/xml; charset=utf-8\r\n"
            "Content-Length: 56\r\n"
            "Connection: close\r\n"
            "\r\n"
            "<?xml version=\"1.0\"?>\n<error>501 Not Implemented</error>");
}

}  // namespace
}  // namespace Zelv
