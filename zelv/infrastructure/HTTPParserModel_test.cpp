#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "zelv/infrastructure/HTTPParser.h"
#include "zelv/infrastructure/testing/HttpPieces.h"
#include "zelv/infrastructure/testing/LiteralHttp.h"

namespace {

using Zelv::Infrastructure::HTTPDocument;
using Zelv::Infrastructure::HTTPParser;
using Zelv::Infrastructure::Testing::httpPieces;
using Zelv::Infrastructure::Testing::LiteralHttp;

/// What requests are put together from, the meaningful words often.
std::string randomRequest(std::mt19937& aRandom) {
  static std::vector<std::string> const cWords = {"POST / HTTP/1.1\r\n",
                                                  "GET /a\r\n",
                                                  "Host: tv\r\n",
                                                  "Host: tv:1\r\n",
                                                  "Content-Type: text/xml\r\n",
                                                  "Content-Type: multipart/x\r\n",
                                                  "Content-Type: text\r\n",
                                                  "Content-Length: 5\r\n",
                                                  "Content-Length: 12\r\n",
                                                  "Content-Length: 524289\r\n",
                                                  "Content-Length: -1\r\n",
                                                  "Transfer-Encoding: chunked\r\n",
                                                  "\r\n",
                                                  "\r\n\r\n",
                                                  "\r",
                                                  "\n",
                                                  ":",
                                                  " ",
                                                  "\t",
                                                  "x",
                                                  "body",
                                                  std::string("\0", 1)};
  std::string text = aRandom() % 8 == 0 ? "" : "POST / HTTP/1.1\r\nHost: tv\r\n";
  if (aRandom() % 2 == 0) {
    text += "Content-Type: text/xml\r\nContent-Length: 9\r\n";
  }
  for (auto count = aRandom() % 12; count > 0; --count) {
    text += cWords[aRandom() % cWords.size()];
  }
  return text;
}

void expectTheSame(std::string const& aInput) {
  HTTPParser parser;
  HTTPDocument document;
  LiteralHttp model;
  HTTPParser::Status status = HTTPParser::STATUS_NONE;
  bool more = true;
  std::vector<std::string> pieces = httpPieces(aInput);
  pieces.emplace_back();
  for (std::string const& piece : pieces) {
    more = parser.read(&document, piece.data(), static_cast<int>(piece.size()), status) != 0;
    ASSERT_EQ(more, model.read(piece));
    if (!more) {
      break;
    }
  }
  EXPECT_EQ(status == HTTPParser::STATUS_REFUSED, model.refused);
  EXPECT_EQ(parser.getStatusText(), model.statusText);
  EXPECT_EQ(document.GetRequest().GetMethod(), model.method);
  for (auto const& [name, value] : model.headers) {
    std::string found = "none";
    document.GetHeader(name, found);
    EXPECT_EQ(found, value) << name;
  }
  ASSERT_EQ(document.GetBody() != nullptr, model.hasBody);
  if (model.hasBody) {
    EXPECT_EQ(std::string(document.GetBody(), static_cast<std::size_t>(document.GetBodySize())),
              model.body);
  }
}

TEST(HTTPParserModel, UnderstandsRequestsAsTheyAreWrittenDown) {
  std::mt19937 random(56);
  for (int round = 0; round < 20000 && !HasFailure(); ++round) {
    char const cut = static_cast<char>(random() % 3 == 0 ? 0 : random() % 256);
    std::string const input = cut + randomRequest(random);
    SCOPED_TRACE(::testing::PrintToString(input));
    expectTheSame(input);
  }
}

}  // namespace
