// The reading of a request in pieces against the plain one. The first byte tells how it is cut.

#include <string>
#include <vector>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/HTTPParser.h"
#include "zelv/infrastructure/testing/HttpPieces.h"
#include "zelv/infrastructure/testing/LiteralHttp.h"

using Zelv::Fuzz::expect;
using Zelv::Fuzz::expectEqual;
using Zelv::Infrastructure::HTTPDocument;
using Zelv::Infrastructure::HTTPParser;
using Zelv::Infrastructure::Testing::httpPieces;
using Zelv::Infrastructure::Testing::LiteralHttp;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  HTTPParser parser;
  HTTPDocument document;
  LiteralHttp model;
  HTTPParser::Status status = HTTPParser::STATUS_NONE;
  std::vector<std::string> pieces =
      httpPieces(std::string(reinterpret_cast<char const*>(aData), aSize));
  pieces.emplace_back();
  for (std::string const& piece : pieces) {
    bool const more =
        parser.read(&document, piece.data(), static_cast<int>(piece.size()), status) != 0;
    expect("asking for more", more == model.read(piece));
    if (!more) {
      break;
    }
  }
  expect("refusal", (status == HTTPParser::STATUS_REFUSED) == model.refused);
  expectEqual("status", parser.getStatusText(), model.statusText);
  expectEqual("method", document.GetRequest().GetMethod(), model.method);
  for (auto const& [name, value] : model.headers) {
    std::string found;
    document.GetHeader(name, found);
    expectEqual("header", found, value);
  }
  expect("body", (document.GetBody() != nullptr) == model.hasBody);
  if (model.hasBody) {
    expectEqual("body",
                std::string(document.GetBody(), static_cast<std::size_t>(document.GetBodySize())),
                model.body);
  }
  return 0;
}
