#pragma once

#include <string>

namespace Zelv {

/// The paths that asset requests are read by, below the branch of the assets.
///
/// Names and IDs come from other devices. Put into a path they could ask for something else, so
/// that one which is no plain text (XPathGate::isQuotableLiteral()) gives the empty path, which
/// addresses nothing; a name that begins with "/" is meant as a path and stays as it is. A union of
/// paths is no path: what is asked about it, by steps put behind it, would be asked about its last
/// part alone. All paths begin with the step "AssetPackage": the main store is not for other
/// devices.
class AssetSteps {
 public:
  static std::string packageByName(std::string const& aName);
  static std::string packageByID(std::string const& aId);

  /// @param aPackagePath  of a package, as above.
  static std::string assetByName(std::string const& aPackagePath, std::string const& aName);
  static std::string assetByID(std::string const& aPackagePath, std::string const& aId);

  /// The path of all packages.
  static std::string anyPackage();

  /// The name of an asset as steps below its package.
  static std::string m_ConstructAssetRequestByName(std::string const& aName);
};

}  // namespace Zelv
