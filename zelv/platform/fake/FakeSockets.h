#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Zelv::Platform::Fake {

/// A datagram that was to be sent.
struct Datagram {
  std::string address;  ///< dotted
  std::uint16_t port;
  std::string text;
};

/// An option that was set, or was to be.
struct SocketOption {
  int level;
  int name;
  std::string value;  ///< the bytes
  bool operator==(SocketOption const&) const = default;
};

/// Faults in the sockets behind CCmSocket, and a trap for datagrams. Without either they are real
/// sockets.
class FakeSockets {
 public:
  /// What can fail.
  enum Call { Open, SetOption, Bind, Listen, Accept, Connect, Receive, Send, Shutdown, Close };

  /// The next aTimes calls of this kind fail with this errno, a Receive or Accept before it waits.
  /// A failing Close closes all the same.
  static void FailNext(Call aCall, int aErrno, int aTimes = 1);

  /// As FailNext(), for setting one option of a level.
  static void FailOption(int aLevel, int aName, int aErrno);

  /// Sending exactly this text fails with this errno, until Reset().
  static void FailSendOf(std::string const& aText, int aErrno);

  /// From now on no datagram leaves; each is kept for TakeDatagrams().
  static void CatchDatagrams();

  /// The datagrams caught since the last call, in order.
  static std::vector<Datagram> TakeDatagrams();

  /// How many calls of this kind there were since Reset(), failed ones included.
  static int Count(Call aCall);

  /// The options set since the last call, in order, failed ones included.
  static std::vector<SocketOption> TakeOptions();

  static void Reset();
};

}  // namespace Zelv::Platform::Fake
