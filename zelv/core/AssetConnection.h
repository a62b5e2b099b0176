#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "zelv/core/AssetSocket.h"

namespace Zelv {

/// The stream to one client. Its own thread reads, writes and closes it; another one may give it
/// up.
class AssetConnection {
 public:
  /// How long a client may let either way stand still, in seconds. Clients that play while they
  /// fetch take a file in small pieces, but take some of it all the time.
  static constexpr long cPatience = 600;

  /// Whether more bytes follow at once, so that the system may put them into one packet.
  enum Follow { Last, MoreFollows };

  /// Sets, on a socket that listens, what connected ones take over from it.
  static void prepare(int aListening);

  /// Takes over a connected socket.
  void adopt(int aSocket);

  /// Waits for bytes. @return their count, 0 at the end, -1 on failure with errno set.
  int receive(char* aBuffer, int aSize);

  /// Sends all of it, in one call of the socket unless that one is cut short. A stream that stood
  /// still for too long is shut down. @return the count, or -1 with errno set.
  int send(std::string_view aData, Follow aFollow);

  /// Nothing can be sent any more; the client gets what was sent, and then the end.
  void endAnswer();

  void close();

  /// From any thread: ends what the connection waits in, and all that it will wait in.
  void giveUp();

  bool isGivenUp() const { return mGivenUp; }
  bool isOpen() const { return mSocket.number() >= 0; }

  /// When bytes last came or went, by PCTime::CoarseMs().
  std::int64_t lastActivity() const { return mLastActivity; }

 private:
  void touch();
  void forgetUnread();

  AssetSocket mSocket;
  std::atomic<bool> mGivenUp{false};
  std::atomic<std::int64_t> mLastActivity{0};
};

}  // namespace Zelv
