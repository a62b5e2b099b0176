#pragma once

#include <optional>
#include <string>

namespace ZelvCtl {

/// How the file of an asset is called here. What a set says of it is a stranger's word: nothing of
/// it may lead out of the directory that files are written to, hide there, or steer a terminal.
class AssetName {
 public:
  /// What follows the last "/". Nothing for a source that ends in none, in a name that begins with
  /// a dot, in one with control characters or in one of more than 255 bytes.
  static std::optional<std::string> of(std::string const& aSource);

  /// The same with a number, from 2 on, before its extension.
  static std::string numbered(std::string const& aName, unsigned aNumber);
};

}  // namespace ZelvCtl
