// Operations on a document, as a stranger could send them. No operation may crash, a document that
// could be saved can be saved afterwards as well, and what is saved loads again as what it is.
//
// An input is the document and then the operations, each on a line: a letter, a tab, the path, and
// for writes a tab and the value. g reads, s writes, c writes and creates.

#include <algorithm>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/PCRealDebug.h"

using Zelv::Fuzz::expect;
using Zelv::Fuzz::expectEqual;
using Zelv::Infrastructure::HierarchicalDB;

namespace {

/// Takes what stands before the next aMark, and the mark.
std::string_view cut(std::string_view& aRest, char aMark) {
  std::string_view const part = aRest.substr(0, aRest.find(aMark));
  aRest.remove_prefix(std::min(part.size() + 1, aRest.size()));
  return part;
}

/// A file of this process alone.
class ScratchFile {
 public:
  ScratchFile() : mPath(std::filesystem::temp_directory_path() / name()) {}
  ~ScratchFile() { std::filesystem::remove(mPath); }

  std::string path() const { return mPath.string(); }

 private:
  static std::string name() {
    std::random_device random;
    return "zelv-fuzz-" + std::to_string(random()) + std::to_string(random()) + ".xml";
  }

  std::filesystem::path const mPath;
};

std::string scratchPath() {
  static ScratchFile const file;
  return file.path();
}

void run(HierarchicalDB& aDatabase, std::string_view aLine) {
  std::string_view const operation = cut(aLine, '\t');
  std::string const path(cut(aLine, '\t'));
  std::string const value(aLine);
  std::string result = "from before";
  try {
    int code = 0;
    if (operation == "g") {
      code = aDatabase.getContent(path, result);
      expect("a failed read is empty", code == 0 || result.empty());
    } else {
      code = aDatabase.setContent(path, value, operation == "c");
    }
    expect("a result is 0 or -1", code == 0 || code == -1);
  } catch (std::out_of_range const&) {
    expect("a path that cannot be rewritten has a bracket", path.find('[') != std::string::npos);
  }
}

bool isAscii(std::string const& aText) {
  return std::all_of(aText.begin(), aText.end(),
                     [](char aByte) { return static_cast<unsigned char>(aByte) < 0x80; });
}

/// The XML library prints declarations without escaping anything in them.
bool hasEntityInDeclaration(std::string const& aText) {
  std::size_t at = aText.find("<?xml");
  while (at != std::string::npos) {
    std::size_t const end = aText.find("?>", at);
    if (aText.find('&', at) < end) {
      return true;
    }
    at = aText.find("<?xml", at + 1);
  }
  return false;
}

std::string serialized(HierarchicalDB& aDatabase) {
  std::string text;
  expect("a loaded document can be serialised", aDatabase.serialize(text, -1) == 0);
  return text;
}

/// Saves and loads into aCopy.
void copyThroughFile(HierarchicalDB& aDatabase, HierarchicalDB& aCopy) {
  expect("the document can be saved", aDatabase.saveToFile(scratchPath()) == 0);
  expect("what was saved can be loaded", aCopy.loadFromFile(scratchPath()) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  PCRealDebug::Silence();
  std::string_view rest(reinterpret_cast<char const*>(aData), aSize);
  HierarchicalDB database;
  bool const loaded = database.loadFromString(std::string(cut(rest, '\n'))) == 0;
  bool const saved = loaded && database.saveToFile(scratchPath()) == 0;
  while (!rest.empty()) {
    run(database, cut(rest, '\n'));
  }
  if (!saved) {
    return 0;
  }
  // The first way through a file drops blanks that the library takes for layout, the second
  // nothing.
  HierarchicalDB first;
  HierarchicalDB second;
  copyThroughFile(database, first);
  copyThroughFile(first, second);
  std::string const text = serialized(first);
  if (isAscii(text) && !hasEntityInDeclaration(text)) {
    expectEqual("a document that was saved and loaded", serialized(second), text);
  }
  return 0;
}
