#include "bench/TwoHosts.h"

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/BareExchange.h"

namespace Zelv::Bench {

namespace {

/// Its arguments, cut at blanks.
void ip(std::string const& aArguments) {
  std::vector<std::string> words{"ip"};
  for (std::size_t from = 0; from < aArguments.size();) {
    std::size_t const to = std::min(aArguments.find(' ', from), aArguments.size());
    words.push_back(aArguments.substr(from, to - from));
    from = to + 1;
  }
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  pid_t process = 0;
  int status = 1;
  if (posix_spawnp(&process, "ip", nullptr, nullptr, arguments.data(), environ) != 0 ||
      waitpid(process, &status, 0) != process || status != 0) {
    throw std::runtime_error("ip " + aArguments + " fails");
  }
}

/// Without it, programs that this one starts would not keep its rights in the new network.
void becomeRoot(uid_t aUser, gid_t aGroup) {
  std::ofstream("/proc/self/setgroups") << "deny";
  std::ofstream("/proc/self/uid_map") << "0 " << aUser << " 1";
  std::ofstream("/proc/self/gid_map") << "0 " << aGroup << " 1";
}

/// @return a descriptor of the network, in which the calling thread then is.
int newNetwork() {
  uid_t const user = geteuid();
  gid_t const group = getegid();
  if (unshare(CLONE_NEWNET) != 0) {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
      throw std::runtime_error("no network of its own to be had");
    }
    becomeRoot(user, group);
  }
  ip("link set lo up");
  // Each message leaves its port occupied for a minute, of which there would soon be none.
  std::ofstream("/proc/sys/net/ipv4/tcp_tw_reuse") << "1";
  std::ofstream("/proc/sys/net/ipv4/ip_local_port_range") << "10240 65535";
  return open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
}

void join(std::string const& aAddress) {
  ip("addr add " + aAddress + "/24 dev eth0");
  ip("link set eth0 up");
  ip("route add 224.0.0.0/4 dev eth0");
}

/// Tries again until the end of the connecting is one that aEnough takes for good.
void tryToConnect(char const* aAddress, std::uint16_t aPort, bool (*aEnough)(int)) {
  sockaddr_in const address = addressOf(aAddress, aPort);
  timeval const patience{0, 100'000};
  auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (std::chrono::steady_clock::now() < end) {
    int const probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    setsockopt(probe, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    int const result =
        connect(probe, reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0 ? 0
                                                                                         : errno;
    close(probe);
    if (aEnough(result)) {
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  throw std::runtime_error(std::string("nobody at ") + aAddress + ":" + std::to_string(aPort));
}

}  // namespace

TwoHosts::TwoHosts() : mThere(newNetwork()) {
  mHere = newNetwork();
  ip("link add name eth0 type veth peer name eth0 netns /proc/" + std::to_string(getpid()) +
     "/fd/" + std::to_string(mThere));
  join(cHere);
  there([] { join(cThere); });
  // A cable carries something only a while after both ends were plugged in.
  tryToConnect(cThere, 1, [](int aResult) { return aResult == ECONNREFUSED; });
}

TwoHosts::~TwoHosts() {
  close(mThere);
  close(mHere);
}

void TwoHosts::there(std::function<void()> const& aWork) const {
  if (setns(mThere, CLONE_NEWNET) != 0) {
    throw std::runtime_error("the other host is out of reach");
  }
  aWork();
  setns(mHere, CLONE_NEWNET);
}

void TwoHosts::waitForPort(char const* aAddress, std::uint16_t aPort) {
  tryToConnect(aAddress, aPort, [](int aResult) { return aResult == 0; });
}

}  // namespace Zelv::Bench
