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

  /// From now on no datagram leaves; each is kept for TakeDatagrams().
  static void CatchDatagrams();

  /// The datagrams caught since the last call, in order.
  static std::vector<Datagram> TakeDatagrams();

  /// How many calls of this kind there were since Reset(), failed ones included.
  static int Count(Call aCall);

  static void Reset();
};

}  // namespace Zelv::Platform::Fake
