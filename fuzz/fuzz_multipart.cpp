// The answer to a request for assets, as any set can send it to a phone. Cut anywhere and byte by
// byte it is the same to the reader, and the same to a model that has it as a whole; the texts in
// it describe assets or nothing; and no file gets a name that leads out of its directory.
//
// The first byte of the input tells where the answer is cut, the rest is the answer. Its boundary
// is "G".

#include <string>
#include <string_view>

#include "apps/zelvctl/AssetAnswer.h"
#include "apps/zelvctl/AssetName.h"
#include "apps/zelvctl/MultipartReader.h"
#include "apps/zelvctl/testing/MultipartModel.h"
#include "fuzz/Expect.h"
#include "fuzz/Target.h"

using Zelv::Fuzz::expect;
using Zelv::Fuzz::expectEqual;
using ZelvCtl::Asset;
using ZelvCtl::AssetAnswer;
using ZelvCtl::AssetName;
using ZelvCtl::MultipartModel;
using ZelvCtl::MultipartReader;
using ZelvCtl::MultipartRecord;

namespace {

void checkName(std::string const& aSource) {
  auto const name = AssetName::of(aSource);
  if (!name) {
    return;
  }
  expect("a name of one step", name->find('/') == std::string::npos);
  expect("a name that is none of the directory's own", !name->starts_with('.'));
  expect("a name without controls",
         name->find_first_of(std::string_view("\0\n\r\t\x1b\x7f", 6)) == std::string::npos);
  expect("a name that a file can have", !name->empty() && name->size() <= 255);
}

/// Reads what the texts say, as the phone does.
class Descriptions : public MultipartReader::Listener {
 public:
  void onText(std::string const& aText) override {
    AssetAnswer const answer(aText);
    for (Asset const& asset : answer.assets()) {
      checkName(asset.source);
    }
  }
  void onFile(MultipartReader::Part const& aPart) override { mLeft = aPart.size.value(); }
  void onFileData(std::string_view aBytes) override {
    expect("bytes of a file", !aBytes.empty() && aBytes.size() <= mLeft);
    mLeft -= aBytes.size();
  }
  void onFileEnd() override { expect("all of a file", mLeft == 0); }

 private:
  std::uint64_t mLeft = 0;
};

void describe(std::string_view aAnswer) {
  Descriptions descriptions;
  MultipartReader reader("G", descriptions);
  try {
    reader.read(aAnswer);
  } catch (MultipartReader::Malformed const&) {
    // the phone tells so
  } catch (AssetAnswer::Malformed const&) {
    // and so here
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  if (aSize == 0) {
    return 0;
  }
  std::string_view const answer(reinterpret_cast<char const*>(aData) + 1, aSize - 1);
  std::string const expected = MultipartModel::of("G", answer);
  expectEqual("an answer", MultipartRecord::ofOnePiece("G", answer), expected);
  expectEqual("an answer byte by byte", MultipartRecord::ofSingleBytes("G", answer), expected);
  std::size_t const cut = answer.size() * aData[0] / 255;
  expectEqual("an answer in two pieces", MultipartRecord::ofTwoPieces("G", answer, cut), expected);
  checkName(std::string(answer));
  describe(answer);
  MultipartReader::boundaryOf(std::string(answer));
  return 0;
}
