#include "zelv/adapter/SocketOptions.h"

#include <cstdint>

#include "zelv/platform/CCmSocket.h"

namespace Zelv::Adapter {

namespace {

// Levels and options as Linux numbers them.
constexpr int levelIP = 0;
constexpr int levelSocket = 1;
constexpr int levelTCP = 6;

/// As the kernel's time value: two machine words.
struct TimeValue {
  long mSeconds;
  long mMicroseconds;
};

struct MembershipRequest {
  SocketCommon::In_addr mGroup;
  SocketCommon::In_addr mInterface;
};

template <typename Value>
int set(int aSocket, int aLevel, int aOption, Value const& aValue) {
  return CCmSocket::SetOptions(aSocket, aLevel, aOption, &aValue, sizeof aValue);
}

SocketCommon::In_addr interfaceAddress(std::string const& aInterface) {
  return aInterface.empty() ? SocketCommon::In_addr{}
                            : CCmSocket::StringToNumeric(aInterface.c_str());
}

constexpr TimeValue patience{3, 0};
constexpr TimeValue noPatience{0, 1000};  // 0 would be no bound at all

}  // namespace

int SocketOptions::reuseAddress(int aSocket) {
  return set(aSocket, levelSocket, 2, std::int32_t{1});
}

int SocketOptions::sendTimeout(int aSocket) {
  return set(aSocket, levelSocket, 21, patience);
}

int SocketOptions::receiveTimeout(int aSocket) {
  return set(aSocket, levelSocket, 20, patience);
}

void SocketOptions::endWaits(int aSocket) {
  set(aSocket, levelSocket, 21, noPatience);
  set(aSocket, levelSocket, 20, noPatience);
}

void SocketOptions::keepAlive(int aSocket) {
  set(aSocket, levelSocket, 9, std::int32_t{1});
  set(aSocket, levelTCP, 4, std::int32_t{60});  // silence before the first question
  set(aSocket, levelTCP, 5, std::int32_t{20});  // between questions
  set(aSocket, levelTCP, 6, std::int32_t{3});   // questions without an answer
}

int SocketOptions::multicastTTL(int aSocket) {
  return set(aSocket, levelIP, 33, std::uint8_t{1});
}

int SocketOptions::multicastLoopOff(int aSocket) {
  return set(aSocket, levelIP, 34, std::uint8_t{0});
}

int SocketOptions::multicastInterface(int aSocket, std::string const& aInterface) {
  return set(aSocket, levelIP, 32, interfaceAddress(aInterface));
}

int SocketOptions::joinGroup(int aSocket, std::string const& aGroup,
                             std::string const& aInterface) {
  return set(
      aSocket, levelIP, 35,
      MembershipRequest{CCmSocket::StringToNumeric(aGroup.c_str()), interfaceAddress(aInterface)});
}

}  // namespace Zelv::Adapter
