#include "zelv/platform/fake/SocketFaults.h"

#include <arpa/inet.h>

#include <cerrno>
#include <cstring>

namespace Zelv::Platform::Fake {

SocketFaults& SocketFaults::instance() {
  static SocketFaults faults;
  return faults;
}

void SocketFaults::failNext(FakeSockets::Call aCall, int aErrno, int aTimes) {
  std::lock_guard lock(mLock);
  mFaults[aCall] = {aErrno, aTimes};
}

void SocketFaults::failOption(int aLevel, int aName, int aErrno) {
  std::lock_guard lock(mLock);
  mOptionFaults[{aLevel, aName}] = aErrno;
}

void SocketFaults::failSendOf(std::string const& aText, int aErrno) {
  std::lock_guard lock(mLock);
  mSendFaults[aText] = aErrno;
}

std::vector<SocketOption> SocketFaults::takeOptions() {
  std::lock_guard lock(mLock);
  return std::exchange(mOptions, {});
}

void SocketFaults::catchDatagrams() {
  std::lock_guard lock(mLock);
  mCatching = true;
}

std::vector<Datagram> SocketFaults::takeDatagrams() {
  std::lock_guard lock(mLock);
  return std::exchange(mDatagrams, {});
}

int SocketFaults::count(FakeSockets::Call aCall) {
  std::lock_guard lock(mLock);
  return mCounts[aCall];
}

void SocketFaults::reset() {
  std::lock_guard lock(mLock);
  mFaults.clear();
  mCounts.clear();
  mOptionFaults.clear();
  mSendFaults.clear();
  mOptions.clear();
  mDatagrams.clear();
  mCatching = false;
}

bool SocketFaults::fails(FakeSockets::Call aCall) {
  std::lock_guard lock(mLock);
  ++mCounts[aCall];
  Fault& fault = mFaults[aCall];
  if (fault.left == 0) {
    return false;
  }
  --fault.left;
  errno = fault.error;
  return true;
}

bool SocketFaults::failsSend(void const* aData, std::size_t aSize) {
  std::lock_guard lock(mLock);
  if (mSendFaults.empty()) {
    return false;
  }
  auto const fault = mSendFaults.find(std::string(static_cast<char const*>(aData), aSize));
  if (fault == mSendFaults.end()) {
    return false;
  }
  errno = fault->second;
  return true;
}

bool SocketFaults::failsOption(int aLevel, int aName, void const* aValue, std::size_t aSize) {
  std::lock_guard lock(mLock);
  mOptions.push_back({aLevel, aName, std::string(static_cast<char const*>(aValue), aSize)});
  auto const fault = mOptionFaults.find({aLevel, aName});
  if (fault == mOptionFaults.end()) {
    return false;
  }
  errno = fault->second;
  return true;
}

bool SocketFaults::catches(void const* aData, std::size_t aSize, sockaddr const* aTarget) {
  std::lock_guard lock(mLock);
  if (!mCatching || !aTarget) {
    return false;
  }
  sockaddr_in target;
  std::memcpy(&target, aTarget, sizeof target);
  char address[INET_ADDRSTRLEN] = {};
  inet_ntop(AF_INET, &target.sin_addr, address, sizeof address);
  mDatagrams.push_back(
      {address, ntohs(target.sin_port), std::string(static_cast<char const*>(aData), aSize)});
  return true;
}

void FakeSockets::FailNext(Call aCall, int aErrno, int aTimes) {
  SocketFaults::instance().failNext(aCall, aErrno, aTimes);
}

void FakeSockets::FailOption(int aLevel, int aName, int aErrno) {
  SocketFaults::instance().failOption(aLevel, aName, aErrno);
}

void FakeSockets::FailSendOf(std::string const& aText, int aErrno) {
  SocketFaults::instance().failSendOf(aText, aErrno);
}

std::vector<SocketOption> FakeSockets::TakeOptions() {
  return SocketFaults::instance().takeOptions();
}

void FakeSockets::CatchDatagrams() {
  SocketFaults::instance().catchDatagrams();
}

std::vector<Datagram> FakeSockets::TakeDatagrams() {
  return SocketFaults::instance().takeDatagrams();
}

int FakeSockets::Count(Call aCall) {
  return SocketFaults::instance().count(aCall);
}

void FakeSockets::Reset() {
  SocketFaults::instance().reset();
}

}  // namespace Zelv::Platform::Fake
