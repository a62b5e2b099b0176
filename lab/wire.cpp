// Joins the ends of virtual cables and loses, doubles, delays and reorders what goes through them,
// as a bad network would. What happens to a frame follows from the seed alone.

#include <arpa/inet.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstring>
#include <iostream>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Rules {
  double loss = 0;       ///< percent of the frames that get lost, at each receiver by itself
  double duplicate = 0;  ///< percent that arrive twice
  double reorder = 0;    ///< percent that are held back, so that later ones overtake them
  int delay = 0;         ///< milliseconds that every frame takes
  int hold = 20;         ///< milliseconds that a frame is held back for
  unsigned seed = 1;
};

struct Frame {
  int port;
  std::vector<char> bytes;
};

volatile sig_atomic_t ended = 0;

void end(int) {
  ended = 1;
}

int openPort(std::string const& aName) {
  int const port = socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, htons(ETH_P_ALL));
  sockaddr_ll address{};
  address.sll_family = AF_PACKET;
  address.sll_protocol = htons(ETH_P_ALL);
  address.sll_ifindex = static_cast<int>(if_nametoindex(aName.c_str()));
  if (port < 0 || address.sll_ifindex == 0 ||
      bind(port, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("wire: cannot open " + aName + ": " + std::strerror(errno));
  }
  return port;
}

/// A hub: what comes in at one port goes out at all others, as the rules allow.
class Wire {
 public:
  Wire(Rules const& aRules, std::vector<int> aPorts)
      : mRules(aRules), mPorts(std::move(aPorts)), mRandom(aRules.seed) {}

  void run() {
    std::vector<pollfd> waits;
    for (int const port : mPorts) {
      waits.push_back({port, POLLIN, 0});
    }
    while (!ended) {
      poll(waits.data(), waits.size(), timeToNext());
      for (pollfd const& wait : waits) {
        if (wait.revents & POLLIN) {
          receive(wait.fd);
        }
      }
      deliverDue();
    }
  }

 private:
  bool chance(double aPercent) { return mPercent(mRandom) < aPercent; }

  int timeToNext() const {
    if (mHeld.empty()) {
      return 500;
    }
    auto const left =
        std::chrono::ceil<std::chrono::milliseconds>(mHeld.begin()->first - Clock::now());
    return std::max<int>(0, static_cast<int>(left.count()));
  }

  void receive(int aFrom) {
    char bytes[ETH_FRAME_LEN + 64];
    sockaddr_ll source{};
    socklen_t length = sizeof source;
    ssize_t const size = recvfrom(aFrom, bytes, sizeof bytes, MSG_DONTWAIT,
                                  reinterpret_cast<sockaddr*>(&source), &length);
    if (size <= 0 || source.sll_pkttype == PACKET_OUTGOING) {
      return;
    }
    for (int const port : mPorts) {
      if (port != aFrom) {
        pass({port, std::vector<char>(bytes, bytes + size)});
      }
    }
  }

  void pass(Frame const& aFrame) {
    if (chance(mRules.loss)) {
      return;
    }
    schedule(aFrame);
    if (chance(mRules.duplicate)) {
      schedule(aFrame);
    }
  }

  void schedule(Frame const& aFrame) {
    int const wait = mRules.delay + (chance(mRules.reorder) ? mRules.hold : 0);
    if (wait == 0) {
      send(aFrame);
    } else {
      mHeld.emplace(Clock::now() + std::chrono::milliseconds(wait), aFrame);
    }
  }

  void deliverDue() {
    while (!mHeld.empty() && mHeld.begin()->first <= Clock::now()) {
      send(mHeld.begin()->second);
      mHeld.erase(mHeld.begin());
    }
  }

  // A port that is full or gone loses the frame, as a cable would.
  static void send(Frame const& aFrame) {
    [[maybe_unused]] ssize_t const sent =
        write(aFrame.port, aFrame.bytes.data(), aFrame.bytes.size());
  }

  Rules mRules;
  std::vector<int> mPorts;
  std::mt19937 mRandom;
  std::uniform_real_distribution<double> mPercent{0, 100};
  std::multimap<Clock::time_point, Frame> mHeld;
};

}  // namespace

int main(int aCount, char** aArguments) {
  CLI::App app{"Joins virtual cables, badly."};
  Rules rules;
  std::vector<std::string> names;
  app.add_option("--loss", rules.loss, "percent of frames lost")->check(CLI::Range(0, 100));
  app.add_option("--duplicate", rules.duplicate, "percent of frames doubled")
      ->check(CLI::Range(0, 100));
  app.add_option("--reorder", rules.reorder, "percent of frames held back")
      ->check(CLI::Range(0, 100));
  app.add_option("--delay", rules.delay, "milliseconds that every frame takes");
  app.add_option("--hold", rules.hold, "milliseconds that a frame is held back for");
  app.add_option("--seed", rules.seed, "seed of the chances");
  app.add_option("ports", names, "the ends of the cables")->required();
  CLI11_PARSE(app, aCount, aArguments);
  signal(SIGTERM, end);
  signal(SIGINT, end);
  try {
    std::vector<int> ports;
    for (std::string const& name : names) {
      ports.push_back(openPort(name));
    }
    Wire(rules, std::move(ports)).run();
  } catch (std::exception const& error) {
    std::cerr << error.what() << "\n";
    return 1;
  }
  return 0;
}
