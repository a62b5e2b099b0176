#include "zelv/core/AssetConnectionListener.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <utility>

#include "zelv/adapter/SocketError.h"
#include "zelv/adapter/SocketOptions.h"
#include "zelv/core/AssetConnection.h"
#include "zelv/core/AssetRequestHandler.h"
#include "zelv/core/MimeTypes.h"
#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/PCNetwork.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv {

using Adapter::RetryPause;
using Adapter::socketErrorText;
using Adapter::SocketOptions;

namespace {

constexpr int familyIPv4 = 2;
constexpr int typeStream = 1;
constexpr int backlog = 5;
constexpr int bothWays = 2;
constexpr int addressSize = sizeof(SocketCommon::SockAddr);

/// Errors after which a socket never works again; all others pass.
bool isFinal(int aErrno) {
  return aErrno == EBADF || aErrno == EINVAL || aErrno == ENOTSOCK;
}

bool isLackOfDescriptors(int aErrno) {
  return aErrno == EMFILE || aErrno == ENFILE;
}

}  // namespace

AssetConnectionListener::AssetConnectionListener() : mMimeTypes(std::make_shared<MimeTypes>()) {}

AssetConnectionListener::~AssetConnectionListener() {
  TraceScope trace("AssetConnectionListener::~AssetConnectionListener");
  closeConnectionListener();
  Destroy();
  endConnections();
  Handlers handlers;
  {
    TCAutoLock lock(mLock);
    handlers.swap(mHandlers);
  }
  for (auto const& handler : handlers) {
    PCRealDebug::Print(PCRealDebug::Trace,
                       "AssetConnectionListener::~AssetConnectionListener: Waiting for a join on "
                       "threadID = %d.",
                       static_cast<int>(handler->GetId()));
    handler->Destroy();
  }
}

bool AssetConnectionListener::initialize(IAssetProvider* aProvider) {
  TraceScope trace("AssetConnectionListener::initialize");
  if (aProvider == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetConnectionListener::initialize: Invalid Asset Provider pointer.");
    return false;
  }
  mProvider = aProvider;
  return initializeListener();
}

// The formats are literals, each with one place for the words of an errno.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
void AssetConnectionListener::fail(char const* aFormat, int aErrno) {
  PCRealDebug::Print(PCRealDebug::Error, aFormat, socketErrorText(aErrno).c_str());
  mSocket.close();
}
#pragma GCC diagnostic pop

bool AssetConnectionListener::initializeListener() {
  TraceScope trace("AssetConnectionListener::initializeListener");
  int const number = CCmSocket::Open(familyIPv4, typeStream, 0);
  if (number < 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetConnectionListener::initializeListener: Failed to create socket.");
    return false;
  }
  mSocket.adopt(number);
  if (SocketOptions::reuseAddress(number) < 0) {
    fail("AssetConnectionListener::initializeListener: Failed to Set REUSEADDR option, errno=%s.",
         errno);
    return false;
  }
  AssetConnection::prepare(number);
  if (!bindPort()) {
    fail("AssetConnectionListener::initializeListener: Failed to bind socket, errno=%s.", errno);
    return false;
  }
  if (CCmSocket::ListenConnectionRequest(number, backlog) < 0) {
    fail("AssetConnectionListener::initializeListener: Failed to register listening, errno=%s.",
         errno);
    return false;
  }
  return true;
}

bool AssetConnectionListener::bindPort() {
  mLocalAddress = {};
  mLocalAddress.mFamily = familyIPv4;
  mLocalAddress.mPort = PCNetwork::Htons(Port);
  return CCmSocket::SetAddress(mSocket.number(), &mLocalAddress, addressSize) >= 0;
}

void AssetConnectionListener::closeConnectionListener() {
  TraceScope trace("AssetConnectionListener::closeConnectionListener");
  mStop = true;
  if (!mSocket.shutdown(bothWays)) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "AssetConnectionListener::closeConnectionListener: Failed to Shutdown "
                       "socket, errno=%s.",
                       socketErrorText(errno).c_str());
  }
  TCAutoLock lock(mLock);
  if (!mServing) {
    mSocket.close();
  }
}

// Accepting

void AssetConnectionListener::t_Main() {
  {
    TCAutoLock lock(mLock);
    mServing = true;
  }
  startConnectionListener();
  leaveThread();
}

void AssetConnectionListener::leaveThread() {
  {
    TCAutoLock lock(mLock);
    mServing = false;
    mSocket.close();
  }
  mFinished = true;
}

void AssetConnectionListener::startConnectionListener() {
  TraceScope trace("AssetConnectionListener::startConnectionListener");
  RetryPause pause;
  while (!mStop) {
    int length = addressSize;
    int const accepted = CCmSocket::AcceptConnection(mSocket.number(), &mPeerAddress, &length);
    if (accepted >= 0) {
      pause.reset();
      serve(accepted);
      continue;
    }
    int const error = errno;
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetConnectionListener::startConnectionListener: Failed to ACCEPT TCP "
                       "connection, errno=%s.",
                       socketErrorText(error).c_str());
    if (!mayRetry(error, pause)) {
      closeConnectionListener();
    }
  }
}

bool AssetConnectionListener::mayRetry(int aErrno, RetryPause& aPause) {
  if (mStop || isFinal(aErrno)) {
    return false;
  }
  if (isLackOfDescriptors(aErrno)) {
    reapHandlers();
    closeLongestIdle();
  }
  aPause.wait();
  return true;
}

// A lack of memory passes like any other error of the machine.
void AssetConnectionListener::serve(int aSocket) {
  try {
    makeRoom();
    startHandler(aSocket);
  } catch (std::exception const& error) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetConnectionListener::startConnectionListener: Connection dropped, "
                       "exception: %s",
                       error.what());
  }
}

void AssetConnectionListener::startHandler(int aSocket) {
  // Closes it wherever this ends early.
  AssetSocket socket;
  socket.adopt(aSocket);
  auto handler = std::make_unique<AssetRequestHandler>(mMimeTypes);
  if (!handler->initialize(aSocket, mProvider)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetConnectionListener::startConnectionListener: Invalid values passed to "
                       "initialize Asset Request Handler!!!");
    return;
  }
  socket.release();
  Handlers one;
  one.push_back(std::move(handler));
  if (!one.front()->Create("Quorl-AssetConnectionListener::startConnectionListener", 0x1000)) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "AssetConnectionListener::startConnectionListener: Error creating a new thread");
    return;
  }
  TCAutoLock lock(mLock);
  mHandlers.splice(mHandlers.end(), one);
}

// Connections

// At each accept, so that what is kept is what is being served, and not what ever was.
void AssetConnectionListener::reapHandlers() {
  Handlers finished;
  TCAutoLock lock(mLock);
  for (auto handler = mHandlers.begin(); handler != mHandlers.end();) {
    auto const current = handler++;
    if ((*current)->isFinished()) {
      finished.splice(finished.end(), mHandlers, current);
    }
  }
}

void AssetConnectionListener::makeRoom() {
  RetryPause pause;
  reapHandlers();
  while (connections() >= MaxHandlers && !mStop) {
    if (!closeLongestIdle()) {
      pause.wait();
    }
    reapHandlers();
  }
}

bool AssetConnectionListener::closeLongestIdle() {
  std::unique_ptr<AssetRequestHandler> const idle = takeLongestIdle();
  if (!idle) {
    return false;
  }
  PCRealDebug::Print(PCRealDebug::Warning,
                     "AssetConnectionListener::startConnectionListener: Too many connections, "
                     "closed the one idle for longest of %d.",
                     static_cast<int>(connections()) + 1);
  idle->Destroy();  // no wait to speak of: whatever it waited in is over
  return true;
}

std::unique_ptr<AssetRequestHandler> AssetConnectionListener::takeLongestIdle() {
  TCAutoLock lock(mLock);
  auto const idle = std::min_element(mHandlers.begin(), mHandlers.end(),
                                     [](auto const& aOne, auto const& aOther) {
                                       return aOne->lastActivity() < aOther->lastActivity();
                                     });
  if (idle == mHandlers.end()) {
    return nullptr;
  }
  std::unique_ptr<AssetRequestHandler> taken = std::move(*idle);
  mHandlers.erase(idle);
  taken->giveUp();
  return taken;
}

void AssetConnectionListener::endConnections() {
  TCAutoLock lock(mLock);
  for (auto const& handler : mHandlers) {
    handler->giveUp();
  }
}

bool AssetConnectionListener::isFinished() const {
  TCAutoLock lock(mLock);
  return mFinished && std::all_of(mHandlers.begin(), mHandlers.end(),
                                  [](auto const& aHandler) { return aHandler->isFinished(); });
}

std::size_t AssetConnectionListener::connections() const {
  TCAutoLock lock(mLock);
  return mHandlers.size();
}

}  // namespace Zelv
