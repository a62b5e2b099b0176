#pragma once

#include <string>

namespace Zelv {

/// One file to send.
class AssetFileObject {
 public:
  /// @param aFileName  the last step of the path, for the log.
  /// @param aPath      where the file lies, as its package says: absolute, or relative to the
  ///                   working directory of the process.
  /// @param aId        of the asset, which the receiver knows the file by.
  AssetFileObject(std::string aFileName, std::string aPath, std::string aId);
  AssetFileObject(AssetFileObject const&) = default;
  AssetFileObject& operator=(AssetFileObject const&) = default;
  virtual ~AssetFileObject();

  std::string const& getFileName() const { return mFileName; }
  std::string const& getPath() const { return mPath; }
  std::string const& getID() const { return mId; }

  /// From here on the file may not be opened.
  void refuse() { mRefused = true; }

  /// False for one that was refused or that climbs(). Whoever sends files MUST treat such a one as
  /// a file that cannot be opened; that holds for what is no regular file, too, which only the one
  /// who opens it can tell.
  bool mayBeOpened() const { return !mRefused && !climbs(); }

  /// True if a component of the path is "..", so that the file may lie outside the directory of its
  /// package.
  bool climbs() const;

 private:
  std::string mFileName;
  std::string mPath;
  std::string mId;
  bool mRefused = false;
};

}  // namespace Zelv
