#include "zelv/core/AssetFileSender.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "zelv/adapter/SocketError.h"
#include "zelv/core/AssetResponse.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv {

namespace {

constexpr long pieceSize = 8192;

}  // namespace

AssetFileSender::AssetFileSender(AssetConnection& aConnection, AssetFileObject const& aFile)
    : mConnection(aConnection), mObject(aFile) {}

bool AssetFileSender::open() {
  std::string const& path = mObject.getPath();
  if (path.size() >= cMaxPath) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetRequestHandler::sendFiles: file name len: %d too long, fail",
                       static_cast<int>(path.size()));
    return false;
  }
  if (!mObject.mayBeOpened() || !mFile.Create(path.c_str(), 0)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetRequestHandler::sendFiles: Failed to Open the file: %s", path.c_str());
    return false;
  }
  return measure();
}

bool AssetFileSender::measure() {
  char const* const path = mObject.getPath().c_str();
  mSize = mFile.Seek(0, PCFile::End);
  if (mSize < 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetRequestHandler::sendFiles: Failed to get file size for: %s", path);
    return false;
  }
  if (mFile.Seek(0, PCFile::Begin) < 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetRequestHandler::sendFiles: Failed to move file pointer to the "
                       "beginning for: %s",
                       path);
    return false;
  }
  return true;
}

void AssetFileSender::sendHead(std::string const& aBoundary, std::string const& aMimeType) {
  mConnection.send(AssetResponse::filePartHead(aBoundary, aMimeType, mObject.getID(), mSize),
                   AssetConnection::MoreFollows);
}

bool AssetFileSender::sendBody() {
  char buffer[pieceSize];
  long size;
  do {
    size = mFile.Read(buffer, pieceSize);
    if (size < 0) {
      PCRealDebug::Print(PCRealDebug::Error,
                         "AssetRequestHandler::sendFiles: Failed to Read from file:path = %s",
                         mObject.getPath().c_str());
      breakOff();
      return false;
    }
    // A size that is a multiple of the piece's ends with an empty one.
    size = static_cast<long>(std::min<long long>(size, mSize - mSent));
    if (!sendPiece(buffer, size)) {
      return false;
    }
  } while (size == pieceSize);
  PCRealDebug::Print(PCRealDebug::Detail,
                     "AssetRequestHandler::sendFiles: expected size: %lld, real size: %lld", mSize,
                     mSent);
  if (mSent < mSize) {
    breakOff();
    return false;
  }
  return true;
}

bool AssetFileSender::sendPiece(char const* aData, long aSize) {
  std::string_view const piece(aData, static_cast<std::size_t>(aSize));
  if (mConnection.send(piece, AssetConnection::MoreFollows) < 0) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "AssetRequestHandler::sendFiles: Failed to send file body, errno=%s.\n",
                       Adapter::socketErrorText(errno).c_str());
    return false;
  }
  mSent += aSize;
  return true;
}

void AssetFileSender::breakOff() {
  PCRealDebug::Print(PCRealDebug::Warning,
                     "AssetRequestHandler::sendFiles: The file ended early, so does the answer: %s",
                     mObject.getPath().c_str());
  mConnection.endAnswer();
}

bool AssetFileSender::sendEnd(bool aLast) {
  mFile.Destroy();
  if (mConnection.send(AssetResponse::filePartEnd(aLast), AssetConnection::MoreFollows) < 0) {
    PCRealDebug::Print(
        PCRealDebug::Warning,
        "AssetRequestHandler::sendFiles: Failed to send file end terminator, errno=%s.\n",
        Adapter::socketErrorText(errno).c_str());
    return false;
  }
  return true;
}

}  // namespace Zelv
