// Escaping against the version that goes byte by byte, and what a reader makes of the result.

#include <string>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/XMLSerializer.h"
#include "zelv/infrastructure/testing/LiteralText.h"

using Zelv::Fuzz::expect;
using Zelv::Fuzz::expectEqual;
using Zelv::Infrastructure::XMLSerializer;
using Zelv::Infrastructure::Testing::LiteralText;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  std::string const text(reinterpret_cast<char const*>(aData), aSize);
  std::string escaped = "old";
  XMLSerializer::escapeXMLEntities(text, escaped);
  expectEqual("escapeXMLEntities", escaped, LiteralText::escape(text));
  if (text.find("&#x") == std::string::npos) {
    expect("nothing is left to escape", escaped.find_first_of("<>\"'") == std::string::npos);
  }
  if (text.find('&') == std::string::npos && escaped.find("&#x") == std::string::npos) {
    XMLSerializer::unescapeXMLEntities(escaped, escaped);
    expectEqual("unescaping what was escaped", escaped, text);
  }
  return 0;
}
