#pragma once

#include <string>

#include "zelv/core/AssetConnection.h"
#include "zelv/core/AssetFileObject.h"
#include "zelv/platform/PCFile.h"

namespace Zelv {

/// Sends one file as a part of an answer, in the order of the operations below. What fails is
/// logged.
class AssetFileSender {
 public:
  /// A path of this many characters or more is refused.
  static constexpr std::size_t cMaxPath = 500;

  /// Both outlive the object.
  AssetFileSender(AssetConnection& aConnection, AssetFileObject const& aFile);

  /// Opens the file, which must be a regular one and lie below its package, and finds out its size.
  bool open();

  /// Sends what stands in front of the file. Whether that worked shows with the body.
  void sendHead(std::string const& aBoundary, std::string const& aMimeType);

  /// Sends as many bytes as the head announced, those of a file that has grown since left out. A
  /// file that turns out shorter, or cannot be read to its end, ends the whole answer: what came
  /// behind would be taken for the rest of it.
  bool sendBody();

  bool sendEnd(bool aLast);

 private:
  bool measure();
  bool sendPiece(char const* aData, long aSize);
  void breakOff();

  AssetConnection& mConnection;
  AssetFileObject const& mObject;
  PCFile mFile;
  long long mSize = 0;
  long long mSent = 0;
};

}  // namespace Zelv
