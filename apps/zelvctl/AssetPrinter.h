#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "apps/zelvctl/AssetAnswer.h"
#include "apps/zelvctl/Output.h"

namespace ZelvCtl {

/// Prints assets: a line each for people, JSON for programs.
class AssetPrinter {
 public:
  /// @param aOut  outlives the object.
  AssetPrinter(std::ostream& aOut, bool aJson) : mOutput(aOut), mJson(aJson) {}

  /// What a set says of one.
  void description(Asset const& aAsset);

  /// The file of one is here.
  void file(Asset const& aAsset, std::string const& aPath, std::uint64_t aSize,
            std::string const& aType);

  bool isBroken() const { return mOutput.isBroken(); }

 private:
  Output mOutput;
  bool const mJson;
};

}  // namespace ZelvCtl
