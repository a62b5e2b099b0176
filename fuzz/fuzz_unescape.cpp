// Unescaping in one pass against the version that searches from the start after each replacement.

#include <string>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/XMLSerializer.h"
#include "zelv/infrastructure/testing/LiteralText.h"

using Zelv::Fuzz::expectEqual;
using Zelv::Infrastructure::XMLSerializer;
using Zelv::Infrastructure::Testing::LiteralText;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  std::string const text(reinterpret_cast<char const*>(aData), aSize);
  std::string const expected = LiteralText::unescape(text);
  std::string other = "old";
  XMLSerializer::unescapeXMLEntities(text, other);
  expectEqual("unescapeXMLEntities", other, expected);
  std::string same = text;
  XMLSerializer::unescapeXMLEntities(same, same);
  expectEqual("unescapeXMLEntities in place", same, expected);
  // The first bytes once more as a text to take out.
  std::string const entities[] = {"&quot;", "&amp;", "&apos;", "&lt;", "&gt;", text.substr(0, 3)};
  for (std::string const& entity : entities) {
    if (!entity.empty()) {
      std::string one = text;
      XMLSerializer::unescapeOneXMLEntity(entity, one);
      expectEqual("unescapeOneXMLEntity", one, LiteralText::unescapeOne(entity, text));
    }
  }
  return 0;
}
