#pragma once

#include <string>

namespace Zelv {

/// The texts that asset requests are answered with. Every attribute stands in single quotes, and
/// every opening tag has a blank before its ">": devices take them apart as plain text. What was
/// asked goes in as it came.
class AssetTexts {
 public:
  /// @param aTag  one of the opening tags below.
  /// @param aXml  the assets; empty when nothing was found.
  static std::string result(std::string const& aRequestId, std::string const& aTag,
                            std::string const& aXml);
  static std::string failure(std::string const& aRequestId);

  /// @name Opening tags, by what was asked
  /// @{
  static std::string packageByName(std::string const& aName);
  static std::string packageByID(std::string const& aId);
  static std::string assetByName(std::string const& aName, std::string const& aPackageName);
  static std::string assetByID(std::string const& aId, std::string const& aPackageName);
  static std::string assetAnywhereByName(std::string const& aName);
  static std::string assetAnywhereByID(std::string const& aId);
  /// @}
};

}  // namespace Zelv
