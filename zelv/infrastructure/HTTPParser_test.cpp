#include "zelv/infrastructure/HTTPParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace {

using Zelv::Infrastructure::HTTPDocument;
using Zelv::Infrastructure::HTTPParser;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Fake::Logged;

char const cAccepted[] = "202 Accepted";
char const cBadRequest[] = "400 Bad Request";
char const cNotImplemented[] = "501 Not Implemented";

/// A status that the parser never sets.
constexpr auto cUntouched = static_cast<HTTPParser::Status>(7);

/// One request on its way through a parser.
struct Reading {
  int read(std::string const& aBytes) {
    return parser.read(&document, aBytes.data(), static_cast<int>(aBytes.size()), status);
  }

  std::string header(std::string const& aName) const {
    std::string value = "none";
    document.GetHeader(aName, value);
    return value;
  }

  bool hasBody() const { return document.GetBody() != nullptr; }

  std::string body() const {
    return hasBody()
               ? std::string(document.GetBody(), static_cast<std::size_t>(document.GetBodySize()))
               : "no body";
  }

  HTTPParser parser;
  HTTPDocument document;
  HTTPParser::Status status = cUntouched;
};

std::string post(std::string const& aHeaders, std::string const& aBody) {
  return "POST / HTTP/1.1\r\n" + aHeaders + "\r\n" + aBody;
}

/// What a request ends with, however it is cut.
struct Request {
  char const* name;
  std::string text;
  HTTPParser::Status status;
  char const* statusText;
  std::string body;
};

void PrintTo(Request const& aRequest, std::ostream* aStream) {
  *aStream << aRequest.name;
}

std::string const cTyped = "Host: tv\r\nContent-Type: text/xml\r\n";

std::vector<Request> requests() {
  return {
      {"Get", "GET / HTTP/1.1\r\nHost: tv\r\n\r\n", cUntouched, cAccepted, ""},
      {"WithALength", post(cTyped + "Content-Length: 10\r\n", "0123456789"), cUntouched, cAccepted,
       "0123456789"},
      {"ZeroBytesInTheBody", post(cTyped + "Content-Length: 3\r\n", std::string("\0\r\0", 3)),
       cUntouched, cAccepted, std::string("\0\r\0", 3)},
      {"BlanksAroundTheLength", post(cTyped + "Content-Length:  3 \t\r\n", "abc"), cUntouched,
       cAccepted, "abc"},
      {"WithoutAHost", "GET / HTTP/1.1\r\nhost: tv\r\n\r\n", cUntouched, cAccepted, "no body"},
      {"LengthOfNothing", post(cTyped + "Content-Length: 0\r\n", ""), cUntouched, cAccepted,
       "no body"},
      {"NegativeLength", post(cTyped + "Content-Length: -5\r\n", ""), cUntouched, cAccepted,
       "no body"},
      {"LengthThatIsNoNumber", post(cTyped + "Content-Length: x\r\n", ""), cUntouched, cAccepted,
       "no body"},
      {"TypeWithoutASlash", post("Host: tv\r\nContent-Type: text\r\n", ""), cUntouched, cAccepted,
       ""},
      {"EmptyType", post("Host: tv\r\nContent-Type:\r\n", ""), cUntouched, cAccepted, ""},
      {"TypeInAnotherCase", post("Host: tv\r\ncontent-type: text/xml\r\n", ""), cUntouched,
       cAccepted, ""},
      {"WithoutALength", post(cTyped, ""), HTTPParser::STATUS_REFUSED, cNotImplemented, "no body"},
      {"LengthInAnotherCase", post(cTyped + "content-length: 3\r\n", ""),
       HTTPParser::STATUS_REFUSED, cNotImplemented, "no body"},
      {"TooLong", post(cTyped + "Content-Length: 524289\r\n", ""), HTTPParser::STATUS_REFUSED,
       cNotImplemented, "no body"},
      {"LengthBeyondNumbers", post(cTyped + "Content-Length: 99999999999999999999\r\n", ""),
       HTTPParser::STATUS_REFUSED, cNotImplemented, "no body"},
      {"Multipart", post("Host: tv\r\nContent-Type: multipart/mixed\r\n", ""),
       HTTPParser::STATUS_REFUSED, cNotImplemented, "no body"},
      {"Chunked", post(cTyped + "Transfer-Encoding: chunked\r\nContent-Length: 3\r\n", ""),
       HTTPParser::STATUS_REFUSED, cNotImplemented, "no body"},
      {"ChunkedAfterAnother",
       post(cTyped + "Transfer-Encoding: gzip, chunked\r\nContent-Length: 1\r\n", "x"), cUntouched,
       cAccepted, "x"},
      {"NoRequestLine", "\r\nHost: tv\r\n\r\n", HTTPParser::STATUS_REFUSED, cBadRequest, "no body"},
      {"HeaderWithoutAName", "GET / HTTP/1.1\r\n : value\r\n\r\n", HTTPParser::STATUS_REFUSED,
       cBadRequest, "no body"},
      {"BlankHeaderLine", "GET / HTTP/1.1\r\n \t\r\nHost: tv\r\n\r\n", cUntouched, cAccepted, ""},
      {"RequestLineOfOneWord", "GET\r\nHost: tv\r\n\r\n", cUntouched, cAccepted, ""},
  };
}

class HTTPParserRequest : public ::testing::TestWithParam<Request> {
 protected:
  static void expectEnd(Reading const& aReading) {
    EXPECT_EQ(aReading.status, GetParam().status);
    EXPECT_EQ(aReading.parser.getStatusText(), GetParam().statusText);
    EXPECT_EQ(aReading.body(), GetParam().body);
  }
};

TEST_P(HTTPParserRequest, EndsTheSameInOnePiece) {
  Reading reading;
  EXPECT_EQ(reading.read(GetParam().text), 0);
  expectEnd(reading);
}

TEST_P(HTTPParserRequest, EndsTheSameInAnyTwoPiecesOfMoreThanFourBytes) {
  std::string const& text = GetParam().text;
  for (std::size_t cut = 5; cut < text.size(); ++cut) {
    SCOPED_TRACE(cut);
    Reading reading;
    EXPECT_EQ(reading.read(text.substr(0, cut)), 1);
    EXPECT_EQ(reading.read(text.substr(cut)), 0);
    expectEnd(reading);
  }
}

TEST_P(HTTPParserRequest, EndsTheSameByteByByteBehindTheFirstFive) {
  std::string const& text = GetParam().text;
  Reading reading;
  EXPECT_EQ(reading.read(text.substr(0, 5)), 1);
  for (std::size_t i = 5; i + 1 < text.size(); ++i) {
    ASSERT_EQ(reading.read(text.substr(i, 1)), 1) << i;
  }
  EXPECT_EQ(reading.read(text.substr(text.size() - 1)), 0);
  expectEnd(reading);
}

INSTANTIATE_TEST_SUITE_P(HTTPParser, HTTPParserRequest, ::testing::ValuesIn(requests()),
                         [](auto const& aInfo) { return aInfo.param.name; });

// With a first piece of one to four bytes the second is searched only as far as it is long, from
// the front of the whole: the end of the headers is not seen when it ends beyond.
TEST(HTTPParser, MissesTheEndOfTheHeadersBehindAFirstPieceOfOneToFourBytes) {
  std::string const text = "GET / HTTP/1.1\r\nHost: tv\r\n\r\n";
  for (std::size_t cut = 1; cut <= 4; ++cut) {
    SCOPED_TRACE(cut);
    Reading reading;
    EXPECT_EQ(reading.read(text.substr(0, cut)), 1);
    EXPECT_EQ(reading.read(text.substr(cut)), 1);
    // The next piece finds it, since it looks back by four bytes.
    EXPECT_EQ(reading.read("x"), 0);
    EXPECT_EQ(reading.header("Host"), "tv");
  }
}

TEST(HTTPParser, TakesTheBodyFromTooFarBehindAFirstPieceOfOneToFourBytes) {
  std::string const text = post(cTyped + "Content-Length: 6\r\n", "012345");
  Reading reading;
  EXPECT_EQ(reading.read(text.substr(0, 2)), 1);
  // The two bytes of the first piece are missing from the body, and so the request has no end yet.
  EXPECT_EQ(reading.read(text.substr(2)), 1);
  EXPECT_EQ(reading.read("67"), 0);
  EXPECT_EQ(reading.body(), "234567");
}

TEST(HTTPParser, TakesNoMoreThanWasReceivedBehindAFirstPieceOfOneToFourBytes) {
  std::string const text = post(cTyped + "Content-Length: 6\r\n", "012");
  Reading reading;
  EXPECT_EQ(reading.read(text.substr(0, 4)), 1);
  // The headers end one byte before the range does.
  EXPECT_EQ(reading.read(text.substr(4)), 1);
  EXPECT_EQ(reading.status, cUntouched);
}

TEST(HTTPParser, CutsOffWhatComesBehindTheLength) {
  Reading reading;
  EXPECT_EQ(reading.read(post(cTyped + "Content-Length: 10\r\n", "0123456789abcde")), 0);
  EXPECT_EQ(reading.body(), "0123456789");
  EXPECT_EQ(reading.document.GetBody()[10], '\0');
}

TEST(HTTPParser, CutsOffWhatComesBehindTheLengthInALaterPiece) {
  Reading reading;
  EXPECT_EQ(reading.read(post(cTyped + "Content-Length: 10\r\n", "0123")), 1);
  EXPECT_EQ(reading.read("456"), 1);
  EXPECT_EQ(reading.read("789abc"), 0);
  EXPECT_EQ(reading.body(), "0123456789");
}

TEST(HTTPParser, TakesABodyOfTheGreatestLength) {
  std::string const body(524288, 'x');
  Reading reading;
  EXPECT_EQ(reading.read(post(cTyped + "Content-Length: 524288\r\n", "")), 1);
  EXPECT_EQ(reading.read(body), 0);
  EXPECT_EQ(reading.body(), body);
}

TEST(HTTPParser, KeepsABodyThatComesInSinglesInFewPieces) {
  std::string body;
  for (int i = 0; i < 100000; ++i) {
    body += static_cast<char>(i * 7);
  }
  Reading reading;
  ASSERT_NE(0, reading.read("POST / HTTP/1.1\r\nHost: h\r\nContent-Type: a/b\r\n"
                            "Content-Length: 100000\r\n\r\n"));
  for (std::size_t i = 0; i + 1 < body.size(); ++i) {
    ASSERT_NE(0, reading.read(body.substr(i, 1)));
  }
  EXPECT_LE(reading.parser.keptPieces(), 13U);
  EXPECT_EQ(0, reading.read(body.substr(body.size() - 1)));
  EXPECT_TRUE(body == std::string(reading.document.GetBody(),
                                  static_cast<std::size_t>(reading.document.GetBodySize())));
}

TEST(HTTPParser, KeepsNoBodyThatIsNotToBeStored) {
  Reading reading;
  reading.document.SuppressStoring(true);
  EXPECT_EQ(reading.read(post(cTyped + "Content-Length: 3\r\n", "abc")), 0);
  EXPECT_FALSE(reading.hasBody());
}

TEST(HTTPParser, RefusesABodyThatIsAttached) {
  Reading reading;
  reading.document.SetHeader("Content-Disposition:", "attachment; filename=x");
  EXPECT_EQ(reading.read(post(cTyped + "Content-Length: 3\r\n", "abc")), 0);
  EXPECT_EQ(reading.parser.getStatusText(), cNotImplemented);
}

TEST(HTTPParser, TakesAHeaderThatSaysAttachmentForAnyOther) {
  Reading reading;
  EXPECT_EQ(reading.read(
                post(cTyped + "Content-Disposition: attachment\r\nContent-Length: 3\r\n", "abc")),
            0);
  EXPECT_EQ(reading.body(), "abc");
}

TEST(HTTPParser, HasNoRequestLineInAnAttachment) {
  Reading reading;
  reading.document.SetAttachment(true);
  EXPECT_EQ(reading.read("Name: lost\r\nHost: tv\r\n\r\n"), 0);
  EXPECT_EQ(reading.status, cUntouched);
  EXPECT_EQ(reading.header("Host"), "tv");
  // The first line is a header in neither case.
  EXPECT_EQ(reading.header("Name"), "none");
}

TEST(HTTPParser, AsksForMoreAfterNothingWhileTheHeadersAreIncomplete) {
  Reading reading;
  EXPECT_EQ(reading.read("GET / HTTP/1.1\r\n"), 1);
  EXPECT_EQ(reading.read(""), 1);
  EXPECT_EQ(reading.status, cUntouched);
  EXPECT_EQ(reading.read("Host: tv\r\n\r\n"), 0);
}

TEST(HTTPParser, RefusesHeadersThatAreTooLong) {
  LogCapture log;
  std::string const line = "GET / HTTP/1.1\r\nName: ";
  std::string const end = "\r\n\r\n";
  Reading fits;
  EXPECT_EQ(fits.read(line + std::string(0x10000 - line.size(), 'x') + end), 0);
  EXPECT_EQ(fits.status, cUntouched);
  Reading reading;
  EXPECT_EQ(reading.read(line + std::string(0x10001 - line.size(), 'x') + end), 0);
  EXPECT_EQ(reading.status, HTTPParser::STATUS_REFUSED);
  EXPECT_EQ(reading.parser.getStatusText(), cBadRequest);
  Reading endless;
  EXPECT_EQ(endless.read(std::string(0x10000, 'x')), 1);
  EXPECT_EQ(endless.read("x"), 0);
  EXPECT_EQ(endless.status, HTTPParser::STATUS_REFUSED);
  EXPECT_EQ(log.count(PCRealDebug::Trace, "HTTPParser::m_readInHeader: Exit. (header too long)"),
            2);
}

TEST(HTTPParser, MayBeUsedAgainAfterAReset) {
  Reading reading;
  reading.read(post(cTyped + "Content-Length: 10\r\n", "0123"));
  reading.parser.reset();
  HTTPDocument second;
  std::string const text = post(cTyped + "Content-Length: 2\r\n", "ab");
  EXPECT_EQ(
      reading.parser.read(&second, text.data(), static_cast<int>(text.size()), reading.status), 0);
  EXPECT_STREQ(second.GetBody(), "ab");
  EXPECT_EQ(reading.parser.getStatusText(), cAccepted);
}

TEST(HTTPParser, SurvivesReadsBehindTheEnd) {
  Reading reading;
  EXPECT_EQ(reading.read(post(cTyped + "Content-Length: 3\r\n", "abc")), 0);
  EXPECT_EQ(reading.read("more"), 0);
  EXPECT_EQ(reading.read(""), 0);
  EXPECT_EQ(reading.status, cUntouched);
}

/// Each way to fail, and what it is told by.
struct Failure {
  char const* name;
  std::string text;
  char const* line;
};

void PrintTo(Failure const& aFailure, std::ostream* aStream) {
  *aStream << aFailure.name;
}

class HTTPParserFailure : public ::testing::TestWithParam<Failure> {};

TEST_P(HTTPParserFailure, IsToldInTheLog) {
  LogCapture log;
  Reading reading;
  EXPECT_EQ(reading.read(GetParam().text), 0);
  EXPECT_THAT(log, Logged(PCRealDebug::Trace, GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(
    HTTPParser, HTTPParserFailure,
    ::testing::Values(
        Failure{"Headers", "\r\n\r\n", "HTTPParser::m_readInHeader: Exit. (header parsing failed)"},
        Failure{"Multipart", post("Host: tv\r\nContent-Type: multipart/x\r\n", ""),
                "HTTPParser::m_readInHeader: Exit. (MULTIPART NOT YET IMPLEMENTED)"},
        Failure{"Chunked", post(cTyped + "Transfer-Encoding: chunked\r\n", ""),
                "HTTPParser::m_readInHeader: Exit. (CHUNKED HANDLING NOT IMPLEMENTED)"},
        Failure{"Length", post(cTyped, ""),
                "HTTPParser::m_readInHeader: Exit. (SAVE TO FILE NOT IMPLEMENTED)"},
        Failure{"Host", "GET / HTTP/1.1\r\n\r\n",
                "HTTPParser::m_readInHeader: Exit. (required host header was missing)"}),
    [](auto const& aInfo) { return aInfo.param.name; });

TEST(HTTPParser, TellsThatTheHostIsMissing) {
  LogCapture log;
  Reading reading;
  reading.read("GET / HTTP/1.1\r\n\r\n");
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "HTTPParser::m_readInHeader: Host was not Passed! 400 Bad Request!"));
}

TEST(HTTPParser, TellsOfAReadError) {
  LogCapture log;
  Reading reading;
  EXPECT_EQ(reading.parser.read(&reading.document, nullptr, -3, reading.status), 0);
  EXPECT_EQ(reading.status, HTTPParser::STATUS_READ_ERROR);
  EXPECT_EQ(reading.parser.getStatusText(), cBadRequest);
  EXPECT_THAT(log, Logged(PCRealDebug::Trace, "HTTPParser::read: Exit. (read error! size was -3)"));
}

TEST(HTTPParser, TellsOfABodyThatEndsEarly) {
  LogCapture log;
  Reading reading;
  EXPECT_EQ(reading.read(post(cTyped + "Content-Length: 10\r\n", "0123")), 1);
  EXPECT_EQ(reading.read(""), 0);
  EXPECT_EQ(reading.status, HTTPParser::STATUS_REFUSED);
  EXPECT_EQ(reading.parser.getStatusText(), cBadRequest);
  EXPECT_FALSE(reading.hasBody());
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "HTTPParser::read: Exit. (terminated before end of document!)"));
}

TEST(HTTPParser, KeepsWhatItReadOfARefusedRequest) {
  Reading reading;
  reading.read(post(cTyped, ""));
  EXPECT_EQ(reading.document.GetRequest().GetMethod(), "POST");
  EXPECT_EQ(reading.header("Host"), "tv");
}

TEST(HTTPParser, LoadsATextThatLacksOnlyTheEndOfItsHeaders) {
  Reading reading;
  EXPECT_TRUE(reading.parser.loadFromString(&reading.document, "GET / HTTP/1.1\r\nHost: tv"));
  EXPECT_EQ(reading.header("Host"), "tv");
  Reading refused;
  EXPECT_FALSE(refused.parser.loadFromString(&refused.document, ""));
  Reading unfinished;
  EXPECT_FALSE(unfinished.parser.loadFromString(
      &unfinished.document, "POST / HTTP/1.1\r\n" + cTyped + "Content-Length: 10"));
}

TEST(HTTPParser, MakesNoResponses) {
  Reading reading;
  reading.parser.createResponse(&reading.document, 200);
  reading.parser.createResponseToLast(&reading.document);
  EXPECT_FALSE(reading.hasBody());
  EXPECT_EQ(reading.parser.getStatusText(), cAccepted);
}

struct Split {
  char const* text;
  char const* separator;
  bool anyOf;
  std::vector<std::string> parts;
};

class HTTPParserSplit : public ::testing::TestWithParam<Split> {};

TEST_P(HTTPParserSplit, GivesTheParts) {
  std::vector<std::string> parts{"before"};
  HTTPParser::split_on(GetParam().text, parts, GetParam().separator, GetParam().anyOf);
  std::vector<std::string> expected{"before"};
  expected.insert(expected.end(), GetParam().parts.begin(), GetParam().parts.end());
  EXPECT_EQ(parts, expected);
}

INSTANTIATE_TEST_SUITE_P(HTTPParser, HTTPParserSplit,
                         ::testing::Values(Split{"", ",", false, {}}, Split{"a", ",", false, {"a"}},
                                           Split{"a,b", ",", false, {"a", "b"}},
                                           Split{",a,,b,", ",", false, {"", "a", "", "b", ""}},
                                           Split{"a\r\nb\rc", "\r\n", false, {"a", "b\rc"}},
                                           Split{"a \tb", " \t", true, {"a", "", "b"}},
                                           Split{"a \tb", " \t", false, {"a", "b"}},
                                           Split{"ab", "", false, {"ab"}},
                                           Split{"ab", "", true, {"ab"}}));

TEST(HTTPParser, TrimsAtEitherEnd) {
  EXPECT_EQ(HTTPParser::trim_head(" a ", " "), "a ");
  EXPECT_EQ(HTTPParser::trim_tail(" a ", " "), " a");
  EXPECT_EQ(HTTPParser::trim(" a b\t", " \t"), "a b");
  EXPECT_EQ(HTTPParser::trim("  ", " "), "");
  EXPECT_EQ(HTTPParser::trim_head("  ", " "), "");
  EXPECT_EQ(HTTPParser::trim_tail("  ", " "), "");
  EXPECT_EQ(HTTPParser::trim("", " "), "");
}

}  // namespace
