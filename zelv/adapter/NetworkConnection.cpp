#include "zelv/adapter/NetworkConnection.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include "zelv/adapter/IncomingText.h"
#include "zelv/adapter/SocketError.h"
#include "zelv/adapter/SocketOptions.h"
#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/PCNetwork.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Adapter {

namespace {

constexpr int familyIPv4 = 2;
constexpr int typeStream = 1;
constexpr int typeDatagram = 2;
constexpr int protocolUDP = 17;
constexpr int backlog = 2;
constexpr int bothWays = 2;
constexpr int bufferSize = 4096;
constexpr int addressSize = sizeof(SocketCommon::SockAddr);

/// Errors after which a socket never works again; all others pass.
bool isFinal(int aErrno) {
  return aErrno == EBADF || aErrno == EINVAL || aErrno == ENOTSOCK;
}

bool isLackOfDescriptors(int aErrno) {
  return aErrno == EMFILE || aErrno == ENFILE;
}

SocketCommon::SockAddr socketAddress(SocketCommon::In_addr aAddress, std::int32_t aPort) {
  SocketCommon::SockAddr result;
  result.mFamily = familyIPv4;
  result.mPort = PCNetwork::Htons(static_cast<std::uint16_t>(aPort));
  result.mAddress = aAddress;
  return result;
}

}  // namespace

NetworkConnection::NetworkConnection() = default;

NetworkConnection::NetworkConnection(std::string const& aProtocol, std::string const& aIP,
                                     std::string const& aLocalInterfaceIP, std::int32_t aPort,
                                     NetworkMessageCallback* aCallback, NetworkConnectionType aType)
    : mProtocol(aProtocol),
      mIP(aIP),
      mLocalInterfaceIP(aLocalInterfaceIP),
      mPort(aPort),
      mCallback(aCallback),
      mType(aType) {}

NetworkConnection::~NetworkConnection() {
  TraceScope trace("NetworkConnection::~NetworkConnection");
  closeConnection();
  Destroy();
  endChildren();
}

void NetworkConnection::t_Main() {
  {
    TCAutoLock lock(mLock);
    mServing = true;
  }
  try {
    serve();
  } catch (std::exception const& error) {
    PCRealDebug::Print(PCRealDebug::Error, "NetworkConnection::t_Main: Given up, exception: %s",
                       error.what());
    closeConnection();
  }
  leaveThread();
}

void NetworkConnection::serve() {
  switch (mType) {
    case TCPListener:
      startTCPListening();
      break;
    case TCPRequestHandler:
      startTCPRead();
      break;
    case UDPHandler:
      startUDPRead();
      break;
    default:
      PCRealDebug::Print(PCRealDebug::Error,
                         "NetworkConnection::t_Main: Invalid NetworkConnectionType !!!.");
  }
}

void NetworkConnection::leaveThread() {
  {
    TCAutoLock lock(mLock);
    mServing = false;
    if (mTerminate) {
      closeSocket();
    }
  }
  mFinished = true;
}

// Opening

SocketCommon::SockAddr NetworkConnection::peerAddress() const {
  return socketAddress(CCmSocket::StringToNumeric(mIP.c_str()), mPort);
}

bool NetworkConnection::open(int aType, int aProtocol) {
  mSocket = CCmSocket::Open(familyIPv4, aType, aProtocol);
  mSocketNumber = mSocket.load();
  return mSocket >= 0;
}

// The formats are the literals below, each with one place for the words of an errno.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
bool NetworkConnection::fail(char const* aFormat, int aErrno) {
  PCRealDebug::Print(PCRealDebug::Error, aFormat, socketErrorText(aErrno).c_str());
  closeConnection();
  return false;
}
#pragma GCC diagnostic pop

bool NetworkConnection::bindAnyAddress() {
  mLocalAddress = socketAddress({}, mPort);
  return CCmSocket::SetAddress(mSocket, &mLocalAddress, addressSize) >= 0;
}

bool NetworkConnection::createTCPListener() {
  TraceScope trace("NetworkConnection::createTCPListener");
  if (!open(typeStream, 0)) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "NetworkConnection::createTCPListener: Failed to create TCP socket, errno=%s.",
        socketErrorText(errno).c_str());
    return false;
  }
  if (SocketOptions::reuseAddress(mSocket) < 0) {
    return fail("NetworkConnection::createTCPListener: Failed to Set REUSEADDR option, errno=%s.",
                errno);
  }
  // Accepted sockets take it over.
  SocketOptions::keepAlive(mSocket);
  if (!bindAnyAddress()) {
    return fail("NetworkConnection::createTCPListener: Failed to BIND TCP socket, errno=%s.",
                errno);
  }
  if (CCmSocket::ListenConnectionRequest(mSocket, backlog) < 0) {
    return fail(
        "NetworkConnection::createTCPListener: Failed to start Listening on socket, errno=%s.",
        errno);
  }
  return true;
}

bool NetworkConnection::createTCPConnection() {
  TraceScope trace("NetworkConnection::createTCPConnection");
  mRemoteAddress = peerAddress();
  if (!open(typeStream, 0)) {
    return fail("NetworkConnection::createTCPConnection: Failed to create TCP socket, errno=%s.",
                errno);
  }
  if (SocketOptions::sendTimeout(mSocket) < 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "NetworkConnection::createTCPConnection: Failed to set the TCP socket SND "
                       "timeout value.");
  }
  if (SocketOptions::receiveTimeout(mSocket) < 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "NetworkConnection::createTCPConnection: Failed to set the TCP socket RCV "
                       "timeout value.");
  }
  // Asked after the time-outs are set, which interrupt() shortens.
  if (mInterrupted) {
    return fail(
        "NetworkConnection::createTCPConnection: Failed to connect to TCP server, errno=%s.",
        ECANCELED);
  }
  if (CCmSocket::Connect(mSocket, &mRemoteAddress, addressSize) < 0) {
    return fail(
        "NetworkConnection::createTCPConnection: Failed to connect to TCP server, errno=%s.",
        errno);
  }
  return true;
}

bool NetworkConnection::createUDPHandler() {
  TraceScope trace("NetworkConnection::createUDPHandler");
  if (mPort == 0) {
    PCRealDebug::Print(PCRealDebug::Error, "NetworkConnection::createUDPHandler: Port not set!!!!");
    return false;
  }
  if (!open(typeDatagram, 0)) {
    return fail("NetworkConnection::createUDPHandler: Failed to create UDP socket, errno=%s.",
                errno);
  }
  if (SocketOptions::reuseAddress(mSocket) < 0) {
    return fail("NetworkConnection::createUDPHandler: Failed to Set REUSEADDR option, errno=%s.",
                errno);
  }
  if (!bindAnyAddress()) {
    return fail("NetworkConnection::createUDPHandler: Failed to bind socket, errno = %s.", errno);
  }
  if (!isMulticastAddress(mIP)) {
    return true;
  }
  if (mLocalInterfaceIP.empty()) {
    PCRealDebug::Print(
        PCRealDebug::Notable,
        "NetworkConnection::createUDPHandler: Binding receive socket to INADDR_ANY.");
  } else {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "NetworkConnection::createUDPHandler: Found Local Interface IP. Setting "
                       "interface to join on to %s.",
                       mLocalInterfaceIP.c_str());
  }
  if (SocketOptions::joinGroup(mSocket, mIP, mLocalInterfaceIP) < 0) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "NetworkConnection::createUDPHandler: Failed to join multicast group %s, errno=%s.",
        mIP.c_str(), socketErrorText(errno).c_str());
    closeConnection();
    return false;
  }
  return true;
}

bool NetworkConnection::createUDPConnection() {
  TraceScope trace("NetworkConnection::createUDPConnection");
  if (!open(typeDatagram, protocolUDP)) {
    return fail("NetworkConnection::createUDPConnection: Failed to create UDP socket, errno=%s.",
                errno);
  }
  mRemoteAddress = peerAddress();
  if (isMulticastAddress(mIP)) {
    prepareMulticast();
  }
  return true;
}

void NetworkConnection::prepareMulticast() {
  if (SocketOptions::multicastTTL(mSocket) < 0) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "NetworkConnection::createUDPConnection: Failed to set multicast TTL, errno=%s.",
        socketErrorText(errno).c_str());
  }
  if (SocketOptions::multicastLoopOff(mSocket) < 0) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "NetworkConnection::createUDPConnection: Failed to disable message loopback, errno=%s.",
        socketErrorText(errno).c_str());
  }
  if (mLocalInterfaceIP.empty()) {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "NetworkConnection::createUDPConnection: Kernel decides the multicast "
                       "interface.[ipaddr.s_addr is set to INADDR_ANY]");
  }
  if (SocketOptions::multicastInterface(mSocket, mLocalInterfaceIP) < 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "NetworkConnection::createUDPConnection: Failed to enable multicast sending "
                       "on interface '%s' errno=%s.",
                       mLocalInterfaceIP.c_str(), socketErrorText(errno).c_str());
  }
}

bool NetworkConnection::isMulticastAddress(std::string const& aAddress) {
  long numbers[4];
  std::string::size_type from = 0;
  for (int part = 0; part < 4; ++part) {
    std::string::size_type const dot = aAddress.find_first_of('.', from);
    if (dot == std::string::npos && part < 3) {
      return false;
    }
    numbers[part] = std::strtol(aAddress.substr(from, dot - from).c_str(), nullptr, 10);
    from = dot + 1;
  }
  return numbers[0] >= 224 && numbers[0] <= 239 &&
         std::all_of(numbers + 1, numbers + 4,
                     [](long aNumber) { return static_cast<unsigned long>(aNumber) <= 255; });
}

// Listening

bool NetworkConnection::startTCPListening() {
  TraceScope trace("NetworkConnection::startTCPListening");
  RetryPause pause;
  while (!mTerminate) {
    int length = addressSize;
    int const accepted = CCmSocket::AcceptConnection(mSocket, &mRemoteAddress, &length);
    if (accepted >= 0) {
      pause.reset();
      acceptChild(accepted);
      continue;
    }
    int const error = errno;
    PCRealDebug::Print(
        PCRealDebug::Error,
        "NetworkConnection::startTCPListening: Failed to ACCEPT TCP connection, errno=%s.",
        socketErrorText(error).c_str());
    if (isLackOfDescriptors(error)) {
      reapChildren();
      closeLongestIdle();
    }
    if (!mayRetry(error, pause)) {
      closeConnection();
    }
  }
  return true;
}

bool NetworkConnection::mayRetry(int aErrno, RetryPause& aPause) {
  if (mTerminate || isFinal(aErrno)) {
    return false;
  }
  aPause.wait();
  return true;
}

void NetworkConnection::acceptChild(int aSocket) {
  if (PCRealDebug::Enabled(PCRealDebug::Detail)) {
    PCRealDebug::Print(
        PCRealDebug::Detail,
        "NetworkConnection::startTCPListening: Received TCP connection request from %s",
        CCmSocket::AddressValueToString(mRemoteAddress.mAddress).c_str());
  }
  makeRoomForChild();
  NetworkConnection* const child = mTerminate ? nullptr : addChild();
  if (!child) {
    CCmSocket::Close(aSocket);
    return;
  }
  child->mSocket = aSocket;
  child->mSocketNumber = aSocket;
  if (!child->Create("Quorl - NetworkConnection::startTCPListening", 4096)) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "NetworkConnection::startTCPListening: Failed to create a new TCP read thread.");
    child->closeConnection();
    mChildren.pop_back();
  }
}

// Null when there is no memory, which passes like any other error of the machine.
NetworkConnection* NetworkConnection::addChild() {
  try {
    mChildren.push_back(std::make_unique<NetworkConnection>());
  } catch (std::bad_alloc const&) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "NetworkConnection::startTCPListening: No memory for a connection.");
    return nullptr;
  }
  NetworkConnection* const child = mChildren.back().get();
  child->mRemoteAddress = mRemoteAddress;
  child->mType = TCPRequestHandler;
  child->mReading = true;
  child->mLastActivity = PCTime::MonotonicMs();
  TCAutoLock lock(mLock);
  child->mCallback = mCallback;
  return child;
}

// At each accept, so that what is kept is what is being served, and not what ever was.
void NetworkConnection::reapChildren() {
  mChildren.remove_if(
      [](std::unique_ptr<NetworkConnection> const& aChild) { return aChild->isFinished(); });
}

// When all are busy with a message that has arrived, whoever comes waits until one is done.
void NetworkConnection::makeRoomForChild() {
  RetryPause pause;
  reapChildren();
  while (mChildren.size() >= MaxChildren && !mTerminate) {
    if (!closeLongestIdle()) {
      pause.wait();
    }
    reapChildren();
  }
}

bool NetworkConnection::closeLongestIdle() {
  NetworkConnection* idle = nullptr;
  for (auto const& child : mChildren) {
    if (child->mReading && (!idle || child->mLastActivity < idle->mLastActivity)) {
      idle = child.get();
    }
  }
  if (!idle || !idle->giveWay()) {
    return false;
  }
  PCRealDebug::Print(PCRealDebug::Warning,
                     "NetworkConnection::startTCPListening: Too many connections, closed the one "
                     "silent for longest of %d.",
                     static_cast<int>(mChildren.size()));
  idle->Destroy();  // no wait to speak of: it was in a read, and that is over
  return true;
}

// Never once the message is there: its sender is told then that it has arrived.
bool NetworkConnection::giveWay() {
  TCAutoLock lock(mLock);
  if (!mReading || mTerminate) {
    return false;
  }
  closeConnection();
  return true;
}

void NetworkConnection::endReading() {
  TCAutoLock lock(mLock);
  mReading = false;
}

bool NetworkConnection::isFinished() const {
  return mFinished && std::all_of(mChildren.begin(), mChildren.end(),
                                  [](auto const& aChild) { return aChild->isFinished(); });
}

void NetworkConnection::endChildren() {
  for (auto const& child : mChildren) {
    child->closeConnection();
  }
  for (auto const& child : mChildren) {
    PCRealDebug::Print(PCRealDebug::Trace,
                       "NetworkAdapter::~NetworkAdapter: Waiting for a join on threadID = %d.",
                       static_cast<int>(child->GetId()));
    child->Destroy();
  }
  mChildren.clear();
}

// Reading

bool NetworkConnection::startTCPRead() {
  TraceScope trace("NetworkConnection::startTCPRead");
  IncomingText message;
  bool const complete = receiveText(message);
  endReading();
  if (!complete) {
    closeConnection();
    return false;
  }
  // It says only that the message has arrived; the sender waits for nothing more.
  if (CCmSocket::SendData(mSocket, "\n", 1, 0) < 1) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "NetworkConnection::startTCPRead: Failed to send TCP packet, errno=%s.",
                       socketErrorText(errno).c_str());
  }
  PCRealDebug::Print(PCRealDebug::Notable,
                     "NetworkConnection::startTCPRead: Received TCP packet of size %d.",
                     static_cast<int>(message.text().size()));
  deliver(message.text());
  closeConnection();
  return true;
}

// A message ends with the read that ends in "\n", wherever in the text that happens to be: peers
// write a message in one line.
bool NetworkConnection::receiveText(IncomingText& aText) {
  char buffer[bufferSize];
  for (;;) {
    int const size = CCmSocket::ReciveData(mSocket, buffer, bufferSize - 1, 0);
    if (size < 0 && errno == EINTR) {
      continue;
    }
    if (size < 1) {
      PCRealDebug::Print(PCRealDebug::Warning,
                         "NetworkConnection::startTCPRead: Failed to receive TCP packet, errno=%s.",
                         socketErrorText(errno).c_str());
      return false;
    }
    mLastActivity = PCTime::MonotonicMs();
    buffer[size] = '\0';
    if (!aText.append(buffer, std::strlen(buffer))) {
      PCRealDebug::Print(PCRealDebug::Warning,
                         "NetworkConnection::startTCPRead: The message is too long, closing the "
                         "connection.");
      return false;
    }
    if (buffer[size - 1] == '\n') {
      return true;
    }
  }
}

bool NetworkConnection::startUDPRead() {
  TraceScope trace("NetworkConnection::startUDPRead");
  char buffer[bufferSize];
  std::string text;
  text.reserve(bufferSize);  // so that no datagram has to ask for memory
  RetryPause pause;
  while (!mTerminate) {
    int length = addressSize;
    int const size =
        CCmSocket::ReciveData(mSocket, buffer, bufferSize - 1, 0, &mRemoteAddress, &length);
    if (size == 0 && !mTerminate) {
      continue;  // an empty datagram is nothing to anybody, nor an end
    }
    if (size < 1) {
      int const error = errno;
      PCRealDebug::Print(PCRealDebug::Error,
                         "NetworkConnection::startUDPRead: Failed to receive datagram, errno=%s.",
                         socketErrorText(error).c_str());
      if (!mayRetry(error, pause)) {
        closeConnection();
      }
      continue;
    }
    pause.reset();
    buffer[size] = '\0';
    if (PCRealDebug::Enabled(PCRealDebug::Notable)) {
      PCRealDebug::Print(
          PCRealDebug::Notable,
          " NetworkConnection::startUDPRead: Received UDP packet from %s, packet size %d.",
          CCmSocket::AddressValueToString(mRemoteAddress.mAddress).c_str(), size);
    }
    text = buffer;
    deliver(text);
  }
  return true;
}

// A stranger's message must not end the thread that others are served by.
void NetworkConnection::deliver(std::string const& aText) {
  NetworkMessageCallback* callback;
  {
    TCAutoLock lock(mLock);
    callback = mCallback;
  }
  if (!callback) {
    return;
  }
  try {
    callback->onMessage(aText, aText);
  } catch (std::exception const& error) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "NetworkConnection::deliver: Message dropped, exception: %s", error.what());
  } catch (...) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "NetworkConnection::deliver: Message dropped, unknown exception.");
  }
}

// Sending

bool NetworkConnection::sendMessage(std::string const& aMessage, int aRepeat) {
  TraceScope trace("NetworkConnection::sendMessage");
  PCRealDebug::Print(
      PCRealDebug::Trace,
      "NetworkConnection::sendMessage: QX:11/15/09 '\\n' terminator will be included "
      "with message body.");
  std::string const text = aMessage + "\n";
  if (mProtocol == "tcp") {
    return sendOverTCP(text);
  }
  if (mProtocol == "udp") {
    sendOverUDP(text, aRepeat);
    return true;
  }
  PCRealDebug::Print(PCRealDebug::Error,
                     "NetworkConnection::sendMessage: TCP / UDP flag not set!!!.");
  return false;
}

bool NetworkConnection::sendOverTCP(std::string const& aText) {
  int const size = static_cast<int>(aText.size());
  int const sent = CCmSocket::SendData(mSocket, aText.data(), size, 0);
  if (sent != size) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "NetworkConnection::sendMessage: (body) Failed to send data over TCP rc=%d, "
                       "errno=%s.",
                       sent, socketErrorText(errno).c_str());
    return false;
  }
  char answer[bufferSize];
  int const received = CCmSocket::ReciveData(mSocket, answer, bufferSize - 1, 0);
  if (received < 0) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "NetworkConnection::sendMessage: Failed to receive TCP packet, errno=%s.",
                       socketErrorText(errno).c_str());
    return false;
  }
  answer[received] = '\0';
  if (std::strcmp(answer, "\n") != 0) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "NetworkConnection::sendMessage: Some problem in the receive message: %s",
                       answer);
  }
  return true;
}

void NetworkConnection::sendOverUDP(std::string const& aText, int aRepeat) {
  for (int turn = 0; turn < aRepeat; ++turn) {
    if (CCmSocket::SendData(mSocket, aText.data(), static_cast<int>(aText.size()), 0,
                            &mRemoteAddress, addressSize) < 0) {
      return;
    }
  }
}

// Closing

void NetworkConnection::closeConnection() {
  TCAutoLock lock(mLock);
  mTerminate = true;
  PCRealDebug::Print(PCRealDebug::Notable,
                     "NetworkConnection::closeConnection: Closing the Socket Number =%d.",
                     mSocketNumber.load());
  mCallback = nullptr;
  int const socket = mSocket;
  if (socket >= 0) {
    CCmSocket::Shutdown(socket, bothWays);  // wakes the thread from whatever it waits in
  }
  if (socket < 0 || !mServing) {
    closeSocket();
  }
}

// A wait that has begun ends by the shutdown. One that begins right behind it, which the shutdown
// of a socket not yet connected does not keep from waiting, ends by the time-out.
void NetworkConnection::interrupt() {
  TCAutoLock lock(mLock);
  mInterrupted = true;
  int const socket = mSocket;
  if (socket >= 0) {
    SocketOptions::endWaits(socket);
    CCmSocket::Shutdown(socket, bothWays);
  }
}

void NetworkConnection::closeSocket() {
  int const socket = mSocket.exchange(-1);
  int const result = socket < 0 ? -1 : CCmSocket::Close(socket);
  // Nothing unusual: whoever closes last finds it closed. So the words are not made for nobody.
  if (result < 0 && PCRealDebug::Enabled(PCRealDebug::Notable)) {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "NetworkConnection::closeConnection: Failed to Shutdown socket, errno=%s.",
                       socketErrorText(socket < 0 ? EBADF : errno).c_str());
  }
}

}  // namespace Zelv::Adapter
