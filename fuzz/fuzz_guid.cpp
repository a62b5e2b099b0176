// Reading an identifier against the version that reads with streams.

#include <string>

#include "fuzz/Expect.h"
#include "fuzz/Outcome.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/GUID.h"
#include "zelv/infrastructure/testing/LiteralText.h"

using Zelv::Fuzz::expect;
using Zelv::Fuzz::expectEqual;
using Zelv::Fuzz::outcome;
using Zelv::Infrastructure::GUID;
using Zelv::Infrastructure::Testing::LiteralText;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  std::string const text(reinterpret_cast<char const*>(aData), aSize);
  std::string const found = outcome([&] { return GUID(text).toString(); });
  expectEqual("GUID", found, outcome([&] { return LiteralText::readIdentifier(text); }));
  if (found.size() == 36) {
    GUID const guid(text);
    expect("the text form reads back", GUID("{" + guid.toString() + "}") == guid);
    expect("the Base64 form has 22 characters", guid.toBase64().size() == 22);
    expect("not less than itself", !(guid < guid) && !(guid > guid));
  }
  return 0;
}
