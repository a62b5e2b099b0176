// The search for several strings against the plain one. The input: patterns, one a line, up to an
// empty line; behind it the text.

#include <string>
#include <utility>
#include <vector>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/StringSearch.h"
#include "zelv/infrastructure/testing/LiteralSearch.h"

using Zelv::Fuzz::expect;
using Zelv::Infrastructure::StringSearch;
using Zelv::Infrastructure::Testing::LiteralSearch;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  // The plain one takes time that grows with the square.
  std::string text(reinterpret_cast<char const*>(aData), aSize < 200 ? aSize : 200);
  std::vector<std::string> patterns;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
    std::string const line = text.substr(0, end);
    text.erase(0, end + 1);
    if (line.empty()) {
      break;
    }
    patterns.push_back(line);
  }
  LiteralSearch const model(patterns);
  std::vector<std::pair<std::string, unsigned int>> matches;
  StringSearch::FindAll(patterns, text.data(), static_cast<unsigned int>(text.size()), matches);
  expect("FindAll", matches == model.all(text));
  expect("FindFirst",
         StringSearch::FindFirst(patterns, text.data(), static_cast<unsigned int>(text.size())) ==
             model.first(text));
  return 0;
}
