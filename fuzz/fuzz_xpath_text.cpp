// The helpers that cut XPath text against versions that go character by character.

#include <string>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/XPath.h"
#include "zelv/infrastructure/testing/LiteralText.h"

using Zelv::Fuzz::expect;
using Zelv::Fuzz::expectEqual;
using Zelv::Infrastructure::GUID;
using Zelv::Infrastructure::XPath;
using Zelv::Infrastructure::Testing::LiteralText;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  std::string const path(reinterpret_cast<char const*>(aData), aSize);
  expectEqual("removeAttributeStep", XPath::removeAttributeStep(path),
              LiteralText::before(path, "/@"));
  expectEqual("removeTextStep", XPath::removeTextStep(path), LiteralText::before(path, "/text()"));
  expectEqual("removePredicates", XPath::removePredicates(path),
              LiteralText::removePredicates(path));
  expectEqual("getLastStep", XPath::getLastStep(path), LiteralText::lastStep(path));
  std::string prefix = "old";
  std::string literalPrefix;
  std::string const predicate = LiteralText::firstPredicate(path, literalPrefix);
  expectEqual("getFirstPredicate", XPath::getFirstPredicate(path, prefix), predicate);
  expectEqual("the prefix", prefix, literalPrefix);
  char const device[] = "2cb63c08-01e0-41cd-950e-1566f18e0983";
  expect("isLocalXPath",
         XPath::isLocalXPath(path, GUID(device)) == LiteralText::isLocalXPath(path, device));
  return 0;
}
