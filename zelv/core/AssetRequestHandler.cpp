#include "zelv/core/AssetRequestHandler.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "zelv/adapter/SocketError.h"
#include "zelv/core/AssetFileSender.h"
#include "zelv/core/AssetRequestReader.h"
#include "zelv/core/AssetResponse.h"
#include "zelv/core/MimeTypes.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv {

using Infrastructure::GUID;
using Infrastructure::HierarchicalDB;

namespace {

// ASCII alone, whatever the locale.
char lower(char aCharacter) {
  return aCharacter >= 'A' && aCharacter <= 'Z' ? static_cast<char>(aCharacter - 'A' + 'a')
                                                : aCharacter;
}

/// Clients whose request is refused see the connection end without a byte, and rely on that for
/// trying again elsewhere; the page that says why goes no further than the log.
void dropPage(std::string const& aPage) {
  PCRealDebug::Print(PCRealDebug::Detail,
                     "AssetRequestHandler::startListener: Closing without sending: %s",
                     aPage.c_str());
}

// Nothing else of the envelope is looked at.
std::string readAssetRequest(std::string const& aText) {
  HierarchicalDB envelope;
  if (envelope.loadFromString(aText) != 0) {
    PCRealDebug::Print(
        PCRealDebug::Warning,
        "AssetRequestHandler::startListener: Failed to read request into HDB, not XML?");
    throw std::runtime_error("no XML");
  }
  std::string request;
  if (envelope.getContent("/Envelope/Body/AssetRequest", request) != 0 || request.empty()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "AssetRequestHandler::startListener: Failed to read Asset request chunk "
                       "from HDB or was not found");
    throw std::runtime_error("no asset request");
  }
  return request;
}

std::string assetRequest(AssetRequestReader const& aReader) {
  if (aReader.isGet()) {
    // Always the same.
    static std::string const ofGet = readAssetRequest(aReader.text());
    return ofGet;
  }
  return readAssetRequest(aReader.text());
}

}  // namespace

AssetRequestHandler::AssetRequestHandler() : AssetRequestHandler(std::make_shared<MimeTypes>()) {}

AssetRequestHandler::AssetRequestHandler(std::shared_ptr<MimeTypes> aMimeTypes)
    : mMimeTypes(std::move(aMimeTypes)) {}

AssetRequestHandler::~AssetRequestHandler() {
  giveUp();
  Destroy();
}

bool AssetRequestHandler::initialize(int aSocket, IAssetProvider* aProvider) {
  TraceScope trace("AssetRequestHandler::initialize");
  if (aProvider == nullptr || aSocket < 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetRequestHandler::initialize: Invalid provider or socket.");
    return false;
  }
  if (!mMimeTypes->load()) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "AssetRequestHandler::initialize: Error!! Mime.xml file not found in r/w area.");
    return false;
  }
  mProvider = aProvider;
  mConnection.adopt(aSocket);
  return true;
}

void AssetRequestHandler::t_Main() {
  try {
    startListener();
  } catch (std::exception const& error) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetRequestHandler::startListener: Given up, exception: %s", error.what());
  }
  mConnection.close();
  mFinished = true;
}

void AssetRequestHandler::startListener() {
  TraceScope trace("AssetRequestHandler::startListener");
  TCAutoLock lock(mLock);
  mBoundary = GUID::createGUID();
  mBoundaryText = mBoundary.toString();
  AssetRequestReader reader;
  switch (reader.read(mConnection)) {
    case AssetRequestReader::Ended:
      return;
    case AssetRequestReader::Refused:
      dropPage(AssetResponse::refusedPage(reader.getStatusText()));
      return;
    case AssetRequestReader::Complete:
      break;
  }
  if (!reader.isMethodAllowed()) {
    dropPage(AssetResponse::methodNotAllowedPage());
    return;
  }
  answer(reader);
}

void AssetRequestHandler::answer(AssetRequestReader const& aReader) {
  try {
    respond(aReader.getStatusText(), assetRequest(aReader));
    return;
  } catch (std::exception const& error) {
    PCRealDebug::Print(PCRealDebug::Detail, "AssetRequestHandler::startListener: Bad request: %s",
                       error.what());
  } catch (...) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "AssetRequestHandler::startListener: Bad request: unknown exception");
  }
  sendBytes(AssetResponse::badRequestPage(), AssetConnection::Last);
}

// The status tells nothing of success: that is said in the parts.
void AssetRequestHandler::respond(std::string const& aStatus, std::string const& aRequest) {
  if (!sendBytes(AssetResponse::head(aStatus, mBoundaryText), AssetConnection::MoreFollows)) {
    return;
  }
  mProvider->handleAssetRequest(aRequest, this, mBoundary);
  sendBytes(AssetResponse::closingDelimiter(mBoundaryText), AssetConnection::Last);
}

bool AssetRequestHandler::sendBytes(std::string const& aBytes, AssetConnection::Follow aFollow) {
  if (mConnection.send(aBytes, aFollow) > 0) {
    return true;
  }
  PCRealDebug::Print(PCRealDebug::Warning,
                     "AssetRequestHandler::startListener: Failed to send TCP packet, errno=%s.\n",
                     Adapter::socketErrorText(errno).c_str());
  return false;
}

void AssetRequestHandler::throwIfGivenUp() const {
  if (mConnection.isGivenUp()) {
    throw std::runtime_error("AssetRequestHandler: the connection was given up");
  }
}

bool AssetRequestHandler::sendText(std::string const& aText, bool) {
  TraceScope trace("AssetRequestHandler::sendText");
  TCAutoLock lock(mLock);
  if (aText.empty()) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetRequestHandler::sendText: aText string is Empty!!.");
    return false;
  }
  throwIfGivenUp();
  if (mConnection.send(AssetResponse::textPart(mBoundaryText, aText),
                       AssetConnection::MoreFollows) > 0) {
    return true;
  }
  PCRealDebug::Print(PCRealDebug::Warning,
                     "AssetRequestHandler::sendText: Failed to send TCP packet, errno=%s.\n",
                     Adapter::socketErrorText(errno).c_str());
  return false;
}

bool AssetRequestHandler::sendFiles(std::list<AssetFileObject> const& aFiles, bool aLast) {
  TraceScope trace("AssetRequestHandler::sendFiles");
  TCAutoLock lock(mLock);
  if (aFiles.empty()) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetRequestHandler::sendFiles: aFilePaths list is Empty!!.");
    return false;
  }
  for (auto file = aFiles.begin(); file != aFiles.end(); ++file) {
    throwIfGivenUp();
    if (!sendFile(*file, aLast && std::next(file) == aFiles.end())) {
      return false;
    }
  }
  return true;
}

bool AssetRequestHandler::sendFile(AssetFileObject const& aFile, bool aLast) {
  AssetFileSender sender(mConnection, aFile);
  if (!sender.open()) {
    return false;
  }
  std::string type = getMimeType(aFile.getPath());
  if (type.empty()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "AssetRequestHandler::sendFiles: mimeType not found. Using "
                       "'application/binary' default.");
    type = "application/binary";
  }
  sender.sendHead(mBoundaryText, type);
  return sender.sendBody() && sender.sendEnd(aLast);
}

std::string AssetRequestHandler::getMimeType(std::string const& aPath) {
  std::size_t const dot = aPath.rfind('.');
  if (dot == std::string::npos) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetRequestHandler::getMimeType: File extension not found!!!!!");
    return "";
  }
  std::string extension = aPath.substr(dot + 1);
  std::transform(extension.begin(), extension.end(), extension.begin(), lower);
  std::string type;
  if (mMimeTypes->find(extension, type) < 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetRequestHandler::getMimeType: Mime Type not found!!!!!");
  }
  return type;
}

}  // namespace Zelv
