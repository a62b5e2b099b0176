#pragma once

#include <netinet/in.h>

#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "zelv/platform/fake/FakeSockets.h"

namespace Zelv::Platform::Fake {

/// What FakeSockets is told, for SocketCalls to follow.
class SocketFaults {
 public:
  static SocketFaults& instance();

  void failNext(FakeSockets::Call aCall, int aErrno, int aTimes);
  void failOption(int aLevel, int aName, int aErrno);
  void failSendOf(std::string const& aText, int aErrno);
  std::vector<SocketOption> takeOptions();
  void catchDatagrams();
  std::vector<Datagram> takeDatagrams();
  int count(FakeSockets::Call aCall);
  void reset();

  /// Counts the call. @return true, with errno set, when it is to fail.
  bool fails(FakeSockets::Call aCall);
  bool failsOption(int aLevel, int aName, void const* aValue, std::size_t aSize);
  bool failsSend(void const* aData, std::size_t aSize);

  /// @return true when the datagram was caught and is not to be sent.
  bool catches(void const* aData, std::size_t aSize, sockaddr const* aTarget);

 private:
  struct Fault {
    int error = 0;
    int left = 0;
  };

  std::mutex mLock;
  std::map<FakeSockets::Call, Fault> mFaults;
  std::map<FakeSockets::Call, int> mCounts;
  std::map<std::pair<int, int>, int> mOptionFaults;
  std::map<std::string, int> mSendFaults;
  std::vector<SocketOption> mOptions;
  std::vector<Datagram> mDatagrams;
  bool mCatching = false;
};

}  // namespace Zelv::Platform::Fake
