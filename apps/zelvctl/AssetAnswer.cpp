#include "apps/zelvctl/AssetAnswer.h"

#include <pugixml.hpp>

namespace ZelvCtl {

namespace {

/// Goes through a tree without recursion: a stranger may nest it as he likes.
class Collector : public pugi::xml_tree_walker {
 public:
  explicit Collector(std::vector<Asset>& aAssets) : mAssets(aAssets) {}

  bool for_each(pugi::xml_node& aNode) override {
    if (aNode.attribute("src")) {
      mAssets.push_back(
          {aNode.name(), aNode.attribute("ID").value(), aNode.attribute("src").value()});
    }
    return mAssets.size() <= AssetAnswer::MaxAssets;
  }

 private:
  std::vector<Asset>& mAssets;
};

}  // namespace

AssetAnswer::AssetAnswer(std::string const& aText) {
  pugi::xml_document document;
  // Several assets come with a reference to a control character between them, and entities come
  // resolved: neither is XML to the letter, and neither matters to this parser.
  auto const result =
      document.load_buffer(aText.data(), aText.size(), pugi::parse_default, pugi::encoding_utf8);
  pugi::xml_node const contents = document.child("RequestContents");
  if (!result || !contents) {
    throw Malformed("a description in it is none");
  }
  mRequestId = contents.attribute("requestID").value();
  mIsFailure = std::string(contents.attribute("error").value()) == "true";
  Collector collector(mAssets);
  contents.child("AssetContents").traverse(collector);
  if (mAssets.size() > MaxAssets) {
    throw Malformed("it describes too many assets");
  }
}

}  // namespace ZelvCtl
