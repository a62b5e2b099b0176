// All operations from many threads at once, with callbacks that call back in, while messages come
// in from the network. Nothing may stall; the thread sanitizer and the check of the order of locks
// look for what did not happen to go wrong.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/Answers.h"
#include "tests/BusyCaller.h"
#include "tests/TemporarySet.h"
#include "zelv/Zelv.h"

namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr std::size_t cCallers = 8;
/// So many calls of a caller may be ahead of what it has heard; tasks would pile up otherwise.
constexpr std::size_t cAhead = 400;
constexpr seconds cStall{30};
char const* const cAddress = "10.78.0.1";

seconds duration() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread is there yet
  char const* const given = std::getenv("ZELV_STRESS_SECONDS");
  return seconds(given == nullptr ? 3 : std::atoi(given));
}

/// The set's own network has nothing but loopback, whose address no set calls its own.
bool giveTheNetworkAnAddress() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): as above
  return std::system(
             "ip link add set0 type veth peer name wire0 && "
             "ip address add 10.78.0.1/24 dev set0 && "
             "ip link set set0 up && ip link set wire0 up") == 0;
}

sockaddr_in at(unsigned short aPort) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(aPort);
  inet_pton(AF_INET, cAddress, &address.sin_addr);
  return address;
}

/// One message on a connection of its own. @return whether it was acknowledged.
bool sendTcp(unsigned short aPort, std::string const& aMessage) {
  int const socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  timeval const patience{20, 0};
  ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  sockaddr_in const address = at(aPort);
  std::string const text = aMessage + "\n";
  char answer = 0;
  bool const acknowledged =
      ::connect(socket, reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0 &&
      ::send(socket, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size()) &&
      ::recv(socket, &answer, 1, 0) == 1 && answer == '\n';
  ::close(socket);
  return acknowledged;
}

void sendUdp(unsigned short aPort, std::string const& aMessage) {
  int const socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in const address = at(aPort);
  ::sendto(socket, aMessage.data(), aMessage.size(), 0, reinterpret_cast<sockaddr const*>(&address),
           sizeof address);
  ::close(socket);
}

std::string envelope(std::string const& aBody) {
  // Answers go to a port where nobody listens, which costs the sender its three attempts.
  std::string const nobody = "tcp://10.78.0.1:9/";
  return "<Envelope><Header><SenderID>phone</SenderID><MessageID>" +
         Zelv::GUID::createGUID().toString() + "</MessageID><ReplyTo>" + nobody +
         "</ReplyTo><From>" + nobody + "</From><NotifyTo>" + nobody + "</NotifyTo></Header><Body>" +
         aBody + "</Body></Envelope>";
}

/// One message to each service. @return how many were not acknowledged.
int speakOnce(int aRound) {
  std::string const path = "/Zelv/Applications/ActiveApplication/Name/text()";
  std::string const id = Zelv::GUID::createGUID().toString();
  int lost = 0;
  for (std::string const& body :
       {"<RequestData><TransactionId>" + id + "</TransactionId><XPath>" + path +
            "</XPath></RequestData>",
        "<SubscribeData><SubscriptionId>" + id + "</SubscriptionId><XPath>" + path +
            "</XPath></SubscribeData>",
        "<SetData><XPath>" + path + "</XPath><Data>" + std::to_string(aRound) + "</Data></SetData>",
        "<UnsubscribeData><SubscriptionId>" + id + "</SubscriptionId></UnsubscribeData>"}) {
    lost += sendTcp(4446, envelope(body)) ? 0 : 1;
  }
  std::string const name = "Busy" + std::to_string(aRound % cCallers);
  lost += sendTcp(4448, envelope("<" + name + ">wire</" + name + ">")) ? 0 : 1;
  sendUdp(4449, "<OnInput><Type>Key</Type><Value>Left</Value></OnInput>");
  return lost;
}

/// Services come up when the data worker has answered for the address.
bool servicesAreUp() {
  for (int i = 0; i < 200; ++i) {
    if (sendTcp(4446, "?") && sendTcp(4448, "?")) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

/// Calls until the end. @return false when what came back stopped coming.
bool callUntil(BusyCaller& aCaller, steady_clock::time_point aEnd) {
  std::size_t calls = 0;
  std::size_t heard = 0;
  steady_clock::time_point lastHeard = steady_clock::now();
  while (steady_clock::now() < aEnd) {
    if (aCaller.heard() != heard) {
      heard = aCaller.heard();
      lastHeard = steady_clock::now();
    } else if (steady_clock::now() - lastHeard > cStall) {
      return false;
    }
    if (calls > heard + cAhead) {
      std::this_thread::yield();
      continue;
    }
    aCaller.step();
    ++calls;
  }
  return true;
}

/// Waits until the tree has done what it was given.
bool treeAnswers(Zelv::IBase& aSystem) {
  Answers answers;
  dynamic_cast<Zelv::IAppData&>(aSystem).requestData(
      "/Zelv/Applications/ActiveApplication/Name/text()", nullptr, &answers);
  return answers.next().has_value();
}

TEST(EveryEntryPoint, MayBeUsedByEightThreadsAtOnceWithCallbacksThatCallBackIn) {
  TemporarySet set;
  ASSERT_TRUE(giveTheNetworkAnAddress());
  ASSERT_TRUE(Zelv::InterfaceFactory::initialize());
  Zelv::IBase& system = *Zelv::InterfaceFactory::getInterface(Zelv::IID_IAppData);
  ASSERT_TRUE(servicesAreUp());

  std::vector<std::unique_ptr<BusyCaller>> callers;
  for (std::size_t i = 0; i < cCallers; ++i) {
    callers.push_back(std::make_unique<BusyCaller>(system, "Busy" + std::to_string(i)));
  }
  steady_clock::time_point const end = steady_clock::now() + duration();
  std::array<bool, cCallers> went{};
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < cCallers; ++i) {
    threads.emplace_back([&, i] { went[i] = callUntil(*callers[i], end); });
  }
  int lost = 0;
  int rounds = 0;
  bool answered = true;
  while (answered && steady_clock::now() < end) {
    lost += speakOnce(rounds++);
    // The network brings work faster than the one data worker does it, and what is too much is
    // dropped; so it waits for its turn from time to time.
    answered = rounds % 20 != 0 || treeAnswers(system);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (std::size_t i = 0; i < cCallers; ++i) {
    EXPECT_TRUE(went[i]) << i;
    EXPECT_GT(callers[i]->heard(), 100U) << i;
    callers[i]->leave();
  }
  EXPECT_EQ(lost, 0) << "of " << rounds;
  EXPECT_GT(rounds, 0);
  EXPECT_TRUE(answered);
  EXPECT_TRUE(treeAnswers(system));
  Zelv::InterfaceFactory::terminate();
}

}  // namespace
