#include "zelv/infrastructure/HTTPRequest.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Zelv::Infrastructure::HTTPRequest;

struct Line {
  char const* text;
  char const* method;
  char const* uri;
  char const* version;
};

class HTTPRequestLine : public ::testing::TestWithParam<Line> {};

TEST_P(HTTPRequestLine, GivesMethodURIAndVersion) {
  HTTPRequest const request{std::string(GetParam().text)};
  EXPECT_EQ(request.GetMethod(), GetParam().method);
  EXPECT_EQ(request.GetURI(), GetParam().uri);
  EXPECT_EQ(request.GetVersion(), GetParam().version);
}

INSTANTIATE_TEST_SUITE_P(HTTPRequest, HTTPRequestLine,
                         ::testing::Values(Line{"POST / HTTP/1.1", "POST", "/", "HTTP/1.1"},
                                           Line{" GET\t/a/b  HTTP/1.0 ", "GET", "/a/b", "HTTP/1.0"},
                                           Line{"GET /", "GET", "/", ""},
                                           Line{"GET", "GET", "", ""},
                                           Line{"a b c d", "a", "b", "c"}, Line{" \t ", "", "", ""},
                                           Line{"", "", "", ""},
                                           Line{"GET /\r\n", "GET", "/", ""}));

TEST(HTTPRequest, ReplacesWhatItHeldWithWhatItReads) {
  HTTPRequest request("GET / HTTP/1.1");
  request.Parse("PUT");
  EXPECT_EQ(request.Serialize(false), "PUT  ");
}

TEST(HTTPRequest, IsWrittenAsItIsRead) {
  HTTPRequest const request("GET / HTTP/1.1");
  EXPECT_EQ(request.Serialize(false), "GET / HTTP/1.1");
  EXPECT_EQ(request.Serialize(true), "GET / HTTP/1.1\r\n");
}

TEST(HTTPRequest, MayBeCopied) {
  HTTPRequest const request("GET / HTTP/1.1");
  HTTPRequest copy;
  copy = request;
  EXPECT_EQ(copy.Serialize(false), request.Serialize(false));
}

}  // namespace
