#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "zelv/adapter/NetworkConnectionType.h"
#include "zelv/adapter/RetryPause.h"
#include "zelv/interfaces/NetworkMessageCallback.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCThread.h"
#include "zelv/platform/SocketCommon.h"

namespace Zelv::Adapter {

class IncomingText;

/// One TCP or UDP socket with the thread that serves it.
///
/// A message is text. On TCP it has a connection of its own: connect, send the text with a final
/// "\n", read the one-byte acknowledgement, close. On UDP it is one datagram, sent once or several
/// times.
///
/// The owner starts the thread with Create() once the socket is prepared, ends it with
/// closeConnection() and Destroy(), and deletes the object. While the thread runs, the thread alone
/// closes the descriptor, so that no call of it ever meets a number that belongs to somebody else
/// by then.
class NetworkConnection : public virtual PCThread {
 public:
  /// Most connections that a listener serves at a time. Beyond it the one silent for longest gives
  /// way.
  static constexpr std::size_t MaxChildren = 256;

  NetworkConnection();

  /// @param aProtocol          "tcp" or "udp".
  /// @param aIP                the peer to send to, or the multicast group to join.
  /// @param aLocalInterfaceIP  dotted address of the interface for multicast; empty lets the kernel
  ///                           decide.
  /// @param aPort              16 bits of it go into the socket address.
  /// @param aCallback          the receiver of messages, not owned; null for sending.
  NetworkConnection(std::string const& aProtocol, std::string const& aIP,
                    std::string const& aLocalInterfaceIP, std::int32_t aPort,
                    NetworkMessageCallback* aCallback, NetworkConnectionType aType);

  ~NetworkConnection() override;
  void t_Main() override;

  /// Binds to any address at the port and listens. False on failure, which is logged; the socket is
  /// then closed. So it is with the three below.
  bool createTCPListener();

  /// Connects to the peer, waiting for 3 seconds at most.
  bool createTCPConnection();

  /// Binds to any address at the port and joins the group if the address is one.
  bool createUDPHandler();

  /// Opens a socket for sending, prepared for multicast if the address is a group.
  bool createUDPConnection();

  /// The thread bodies. True when they came to their proper end.
  bool startTCPListening();
  bool startTCPRead();
  bool startUDPRead();

  /// Sends on an outgoing connection.
  ///
  /// @param aRepeat  how many datagrams UDP sends; 0 or less sends none. TCP sends once.
  /// @return on TCP whether the text went out and something, even a wrong acknowledgement or the
  /// end of the connection, came back within 3 seconds; on UDP always true.
  bool sendMessage(std::string const& aMessage, int aRepeat);

  /// Ends the service: nothing is delivered any more, and the thread, which is not waited for,
  /// ends.
  void closeConnection();

  /// Ends what an outgoing connection waits in on another thread, and makes connecting fail from
  /// now on. The thread that sends closes the connection, as ever.
  void interrupt();

  /// True once the thread body is over, and those of the connections that it accepted: joining
  /// them does not wait.
  bool isFinished() const;

  /// True after closeConnection().
  bool isClosed() const { return mTerminate; }

  /// True for a dotted text whose first number lies in 224 to 239 and whose others are at most 255.
  static bool isMulticastAddress(std::string const& aAddress);

 private:
  using Children = std::list<std::unique_ptr<NetworkConnection>>;

  SocketCommon::SockAddr peerAddress() const;
  bool open(int aType, int aProtocol);
  bool bindAnyAddress();
  void prepareMulticast();
  bool fail(char const* aFormat, int aErrno);

  void acceptChild(int aSocket);
  NetworkConnection* addChild();
  void reapChildren();
  void makeRoomForChild();
  bool closeLongestIdle();
  bool giveWay();
  void endReading();
  void endChildren();

  void serve();
  bool receiveText(IncomingText& aText);
  void deliver(std::string const& aText);
  bool mayRetry(int aErrno, RetryPause& aPause);
  void leaveThread();
  void closeSocket();
  bool sendOverTCP(std::string const& aText);
  void sendOverUDP(std::string const& aText, int aRepeat);

  std::string mProtocol;
  std::string mIP;
  std::string mLocalInterfaceIP;
  std::int32_t mPort = 0;
  std::atomic<bool> mTerminate{false};
  PCMutex mLock;
  NetworkMessageCallback* mCallback ZELV_GUARDED_BY(mLock) = nullptr;
  NetworkConnectionType mType = NoConnectionType;
  Children mChildren;
  std::atomic<int> mSocket{-1};
  SocketCommon::SockAddr mLocalAddress;
  SocketCommon::SockAddr mRemoteAddress;

  /// The number that log lines tell of, also when the socket is closed.
  std::atomic<int> mSocketNumber{-1};
  bool mServing ZELV_GUARDED_BY(mLock) = false;
  std::atomic<bool> mFinished{false};
  std::atomic<bool> mInterrupted{false};
  /// Of an accepted connection: its message has not arrived yet.
  std::atomic<bool> mReading{false};
  std::atomic<std::int64_t> mLastActivity{0};
};

}  // namespace Zelv::Adapter
