// A request on the port of assets, as anybody can send it, on a provider with three packages. Each
// part is one of the texts that there are; a file is one that a package names, and nothing of the
// main store shows; a failure comes last; and afterwards a good request is answered as ever.
//
// The input is the element that an envelope holds.

#include <memory>
#include <set>
#include <string>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/core/AssetPackage.h"
#include "zelv/core/AssetProvider.h"
#include "zelv/core/testing/RecordedParts.h"
#include "zelv/platform/PCRealDebug.h"

using Zelv::Core;
using Zelv::Fuzz::expect;
using Zelv::Fuzz::expectEqual;
using Zelv::Testing::RecordedParts;

namespace {

using Provider = Core::AssetProvider;

constexpr char const* cPackages[] = {
    "<AssetPackage ID='A984' name='test' path=''><TVImage src='tv.png' ID='A2CE'/></AssetPackage>",
    "<AssetPackage ID='B1' name='p' path='p/'><a src='a.png' ID='1'/><TVImage src='t.jpg' ID='2'/>"
    "</AssetPackage>",
    "<AssetPackage ID='B2' name='q' path='/q/'><deep><a src='x/c.gif' ID='3'><b src='d' ID='4'/>"
    "</a></deep><bad src='no ID'/></AssetPackage>"};

std::set<std::string> const cPaths = {"tv.png",     "p/a.png", "p/t.jpg",
                                      "/q/x/c.gif", "/q/d",    "/q/no ID"};

/// As a connection sends them; checks what it is given.
class Parts : public RecordedParts {
 public:
  bool sendText(std::string const& aText, bool aLast) override {
    expect("nothing behind a failure", !failed);
    failed = aText.starts_with("<RequestContents error='true' requestID='");
    if (failed) {
      expect("the end of a failure", aText.ends_with("' />"));
    } else {
      expect("the begin of a result", aText.starts_with("<RequestContents requestID='"));
      expect("the end of a result", aText.ends_with("</AssetContents></RequestContents>"));
    }
    return RecordedParts::sendText(aText, aLast);
  }

  bool sendFiles(std::list<Zelv::AssetFileObject> const& aFiles, bool aLast) override {
    expect("files that there are", !aFiles.empty() && !texts.empty());
    expect("no files behind a failure", !failed);
    expect("nothing behind the last part", lasts.empty() || !lasts.back());
    for (Zelv::AssetFileObject const& file : aFiles) {
      expect("a path that a package names", !file.mayBeOpened() || cPaths.contains(file.getPath()));
    }
    return RecordedParts::sendFiles(aFiles, aLast);
  }

  bool failed = false;
};

Provider& provider() {
  static Provider made([](Zelv::GUID) -> Zelv::IBase* { return nullptr; });
  static bool const filled = [] {
    for (char const* text : cPackages) {
      made.addPackage(std::make_shared<Provider::AssetPackage>(text, ""));
    }
    return true;
  }();
  expect("packages", filled);
  return made;
}

void askForTheImage() {
  Parts parts;
  int const result = provider().handleAssetRequest(
      "<AssetRequest ID='r'><Asset ID='A2CE'/></AssetRequest>", parts);
  expectEqual("the result of a good request", std::to_string(result), "0");
  expect("its parts", parts.calls.size() == 2);
  expectEqual("its text", parts.calls[0],
              "text <RequestContents requestID='r'><AssetContents type='asset' ID='A2CE' ><TVImage "
              "src='tv.png' ID='A2CE'/></AssetContents></RequestContents>");
  expectEqual("its file", parts.calls[1], "files tv.png|tv.png|A2CE last");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  PCRealDebug::Silence();
  Parts parts;
  int const result = provider().handleAssetRequest(
      std::string(reinterpret_cast<char const*>(aData), aSize), parts);
  expect("success or failure", result == 0 || result == -1);
  expect("a failure is a failure", !parts.failed || result == -1);
  askForTheImage();
  return 0;
}
