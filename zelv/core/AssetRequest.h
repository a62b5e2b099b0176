#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <set>
#include <string>

#include "zelv/core/AssetParts.h"

namespace Zelv {

/// Answers one asset request: for each thing asked a part of text that describes it, followed by
/// its files. What has been sent stays sent, whatever comes of the rest.
class AssetRequest {
 public:
  /// Reads a path below the branch of the assets. @return 0, or else there is an error.
  using Read = std::function<int(std::string const& aPath, std::string& aResult)>;

  /// Removes from the paths of files those that a package names.
  using RemoveNamed = std::function<void(std::set<std::string>& aPaths)>;

  /// What one request may ask for; each thing costs several reads.
  static constexpr std::size_t maximumThings = 1024;

  /// The parts outlive the object.
  AssetRequest(Read aRead, RemoveNamed aRemoveNamed, AssetParts& aParts);

  /// @param aRequest  the element "AssetRequest". Packages are answered before single assets, each
  ///                  in the order of the document.
  /// @return 0 when all of it was answered; otherwise -1, and the rest is dropped.
  /// @throws what the parts throw when not even a failure can be told.
  int handle(std::string const& aRequest);

 private:
  struct Thing;

  bool answerPackage(std::string const& aText, bool aLast);
  bool answerAssetsByName(Thing const& aPackage, std::list<std::string> const& aNames, bool aLast);
  bool answerAssetsByID(Thing const& aPackage, std::list<std::string> const& aIds, bool aLast);
  bool answerAsset(std::string const& aText, bool aLast);

  /// @return false when the rest is to be dropped.
  bool answer(std::string const& aPath, std::string const& aTag, bool aLast);

  bool m_SendResponse(std::string const& aRequestPath, std::string const& aRequestString,
                      std::string const& aRequestID, bool aLast);
  void m_SendFail(std::string const& aRequestID);

  void send(std::string const& aPath, std::string const& aTag, std::string const& aRequestID,
            bool aLast);
  std::string read(std::string const& aPath, char const* aFailure) const;

  void refuseUnnamed(std::list<AssetFileObject>& aFiles) const;

  Read const mRead;
  RemoveNamed const mRemoveNamed;
  AssetParts& mParts;
  std::string mId;
  std::size_t mThings = 0;
};

}  // namespace Zelv
