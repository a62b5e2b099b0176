// Both directions of Base64 against versions that work on single bits and characters.

#include <string>

#include "fuzz/Expect.h"
#include "fuzz/Outcome.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/Base64.h"
#include "zelv/infrastructure/testing/LiteralText.h"

using Zelv::Fuzz::expectEqual;
using Zelv::Fuzz::outcome;
using Zelv::Infrastructure::Testing::LiteralText;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  std::string const bytes(reinterpret_cast<char const*>(aData), aSize);
  std::string const encoded = Zelv::Infrastructure::base64Encode(bytes);
  expectEqual("base64Encode", encoded, LiteralText::base64Encode(bytes));
  expectEqual("base64Decode of what was encoded", Zelv::Infrastructure::base64Decode(encoded),
              std::string(aSize, '\0'));
  expectEqual("base64Decode", outcome([&] { return Zelv::Infrastructure::base64Decode(bytes); }),
              outcome([&] { return LiteralText::base64Decode(bytes); }));
  return 0;
}
