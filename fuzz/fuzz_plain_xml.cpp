// A message read without a tree against the same read with one: whatever it is and whatever is
// asked for, the answers are the same, also when something else was asked for before.
//
// The first line of the input is the path, the rest the message.

#include <stdexcept>
#include <string>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/PCRealDebug.h"

using Zelv::Fuzz::expect;
using Zelv::Fuzz::expectEqual;
using Zelv::Infrastructure::HierarchicalDB;

namespace {

std::string read(HierarchicalDB& aDocument, std::string const& aPath) {
  std::string value;
  try {
    int const result = aDocument.getContent(aPath, value);
    return std::to_string(result) + " " + value;
  } catch (std::out_of_range const&) {
    return "out of range";
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  PCRealDebug::Silence();
  std::string const input(reinterpret_cast<char const*>(aData), aSize);
  std::size_t const line = input.find('\n');
  std::string const path = input.substr(0, line);
  std::string const message = line == std::string::npos ? "" : input.substr(line + 1);
  HierarchicalDB tree;
  HierarchicalDB brief(HierarchicalDB::OfOneThread{});
  int const loaded = tree.loadFromString(message);
  expect("both load it, or neither", brief.loadFromString(message) == loaded);
  for (std::string const& asked : {path, std::string("//*"), path}) {
    expectEqual("what stands at a path", read(brief, asked), read(tree, asked));
  }
  return 0;
}
