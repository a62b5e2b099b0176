#include "zelv/infrastructure/HTTPDocument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace {

using Zelv::Infrastructure::HTTPDocument;
using Zelv::Infrastructure::HTTPRequest;
using Zelv::Platform::Fake::LogCapture;

char const cOwnType[] = "multipart/mixed; boundary=\"4980320D9B8547dbA4EC840ADA5D5C56\"";

std::string headerOf(HTTPDocument const& aDocument, std::string const& aName) {
  std::string value = "none";
  aDocument.GetHeader(aName, value);
  return value;
}

std::unique_ptr<char[]> bodyOf(std::string const& aText) {
  auto body = std::make_unique<char[]>(aText.size() + 1);
  std::copy(aText.begin(), aText.end(), body.get());
  return body;
}

TEST(HTTPDocument, IsEmptyAtFirst) {
  HTTPDocument const document;
  EXPECT_EQ(document.GetRequest().GetMethod(), "");
  EXPECT_EQ(document.GetBody(), nullptr);
  EXPECT_EQ(document.GetBodySize(), 0);
  EXPECT_FALSE(document.IsAttachment());
  EXPECT_FALSE(document.IsStoringSuppressed());
}

TEST(HTTPDocument, MayBeMadeAroundARequest) {
  HTTPDocument const document(HTTPRequest("GET /a HTTP/1.1"));
  EXPECT_EQ(document.GetRequest().GetURI(), "/a");
}

TEST(HTTPDocument, FindsAHeaderByItsNameInExactCase) {
  HTTPDocument document;
  EXPECT_TRUE(document.m_AddHeader("Host: here"));
  std::string value = "as it was";
  EXPECT_EQ(document.GetHeader("host", value), -1);
  EXPECT_EQ(value, "as it was");
  EXPECT_EQ(document.GetHeader("Host", value), 0);
  EXPECT_EQ(value, "here");
}

TEST(HTTPDocument, KeepsTheFirstOfTwoHeadersOfOneName) {
  HTTPDocument document;
  EXPECT_TRUE(document.m_AddHeader("Name: first"));
  EXPECT_TRUE(document.m_AddHeader("Name: second"));
  EXPECT_EQ(headerOf(document, "Name"), "first");
}

TEST(HTTPDocument, TakesTheTextBehindALeadingColonForTheName) {
  HTTPDocument document;
  EXPECT_TRUE(document.m_AddHeader(": Name: value"));
  EXPECT_EQ(headerOf(document, "Name"), "value");
}

TEST(HTTPDocument, RefusesALineWithoutAName) {
  LogCapture log;
  HTTPDocument document;
  EXPECT_FALSE(document.m_AddHeader(" : value"));
  EXPECT_FALSE(document.m_AddHeader(""));
  EXPECT_EQ(
      log.count(PCRealDebug::Trace, "HTTPDocument::m_AddHeader: Exit. (failed to create header!)"),
      2);
}

TEST(HTTPDocument, ReplacesAHeaderThatIsSet) {
  HTTPDocument document;
  EXPECT_EQ(document.SetHeader("Name", "first"), 0);
  EXPECT_EQ(document.SetHeader("Name", "second"), 0);
  EXPECT_EQ(headerOf(document, "Name"), "second");
}

TEST(HTTPDocument, SetsNoHeaderWithoutAName) {
  HTTPDocument document;
  EXPECT_EQ(document.SetHeader("", "value"), -1);
  EXPECT_EQ(headerOf(document, ""), "none");
}

TEST(HTTPDocument, TellsWhetherAHeaderWasFound) {
  LogCapture log;
  HTTPDocument document;
  document.SetHeader("Name", "value");
  headerOf(document, "Name");
  EXPECT_EQ(log.count(PCRealDebug::Trace, "HTTPDocument::GetHeader: Exit. (header found)"), 1);
  headerOf(document, "name");
  EXPECT_EQ(log.count(PCRealDebug::Trace, "HTTPDocument::GetHeader: Exit. (header not found)"), 1);
}

TEST(HTTPDocument, KeepsTheRequestOfBeforeWhenTheNextHasNoMethod) {
  LogCapture log;
  HTTPDocument document;
  EXPECT_TRUE(document.m_SetRequest("POST / HTTP/1.1"));
  EXPECT_FALSE(document.m_SetRequest(" \t"));
  EXPECT_EQ(document.GetRequest().GetMethod(), "POST");
  EXPECT_EQ(log.count(PCRealDebug::Trace,
                      "HTTPDocument::m_SetRequest: Exit. (failed to create request header!)"),
            1);
}

TEST(HTTPDocument, SaysThatItIsNotSerialised) {
  LogCapture log;
  HTTPDocument document;
  EXPECT_EQ(document.Serialize(), 0);
  EXPECT_EQ(
      log.count(PCRealDebug::Error, "HTTPDocument::Serialize: Entry. WARNING! NOT IMPLEMENTED"), 1);
  EXPECT_EQ(
      log.count(PCRealDebug::Error, "HTTPDocument::Serialize: Exit. WARNING! NOT IMPLEMENTED"), 1);
  EXPECT_EQ(headerOf(document, "Content-Type"), "none");
}

struct Types {
  char const* before;
  char const* after;
};

class HTTPDocumentWithAttachments : public ::testing::TestWithParam<Types> {};

TEST_P(HTTPDocumentWithAttachments, GetsAMultipartTypeWithABoundaryWhenSerialised) {
  HTTPDocument document;
  document.AddAttachment(std::make_unique<HTTPDocument>());
  document.SetHeader("Content-Type", GetParam().before);
  document.Serialize();
  EXPECT_EQ(headerOf(document, "Content-Type"), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(HTTPDocument, HTTPDocumentWithAttachments,
                         ::testing::Values(Types{"multipart/related; boundary=\"x\"",
                                                 "multipart/related; boundary=\"x\""},
                                           Types{"multipart/related", cOwnType},
                                           Types{"text/xml", cOwnType},
                                           Types{"text/xml; boundary=x", cOwnType},
                                           Types{"", cOwnType}));

TEST(HTTPDocument, IsCopiedWithAllThatItHolds) {
  HTTPDocument document(HTTPRequest("GET / HTTP/1.1"));
  document.SetHeader("Name", "value");
  document.SetBody(bodyOf("text"), 4);
  document.AddAttachment(std::make_unique<HTTPDocument>());
  HTTPDocument copy(document);
  document.SetHeader("Name", "other");
  EXPECT_EQ(headerOf(copy, "Name"), "value");
  EXPECT_EQ(copy.GetRequest().GetMethod(), "GET");
  EXPECT_EQ(copy.GetBodySize(), 4);
  EXPECT_STREQ(copy.GetBody(), "text");
  EXPECT_NE(copy.GetBody(), document.GetBody());
  copy.Serialize();
  EXPECT_EQ(headerOf(copy, "Content-Type"), cOwnType);
}

}  // namespace
