#include "apps/zelvctl/AssetPrinter.h"

#include <nlohmann/json.hpp>

#include "apps/zelvctl/PrintableText.h"

namespace ZelvCtl {

using nlohmann::json;

void AssetPrinter::description(Asset const& aAsset) {
  if (mJson) {
    mOutput.print(json{{"asset", aAsset.name}, {"id", aAsset.id}, {"src", aAsset.source}});
  } else {
    mOutput.print(PrintableText::field(aAsset.name) + " " + PrintableText::field(aAsset.id) + " " +
                  PrintableText::line(aAsset.source) + "\n");
  }
}

void AssetPrinter::file(Asset const& aAsset, std::string const& aPath, std::uint64_t aSize,
                        std::string const& aType) {
  if (mJson) {
    mOutput.print(json{{"asset", aAsset.name},
                       {"id", aAsset.id},
                       {"src", aAsset.source},
                       {"type", aType},
                       {"size", aSize},
                       {"file", aPath}});
  } else {
    mOutput.print(PrintableText::field(aAsset.name) + " " + PrintableText::field(aAsset.id) + " " +
                  std::to_string(aSize) + " " + PrintableText::line(aPath) + "\n");
  }
}

}  // namespace ZelvCtl
