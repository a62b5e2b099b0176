// Joins the ends of virtual cables and loses, doubles, delays and reorders what goes through them,
// as a bad network would. The chances come from the seed, in the order in which frames arrive.

#include <arpa/inet.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

/// What the kernel puts before a frame that the driver left unfinished; <linux/virtio_net.h> has
/// it, in words that C++ does not take.
constexpr std::size_t offloadHeader = 10;

/// A cable that is pulled for a while.
struct Cut {
  std::string port;
  Milliseconds from;
  Milliseconds until;
};

struct Rules {
  double loss = 0;       ///< percent of the frames that get lost, at each receiver by itself
  double duplicate = 0;  ///< percent that arrive twice
  double reorder = 0;    ///< percent that are held back, so that later ones overtake them
  int delay = 0;         ///< milliseconds that every frame takes
  int hold = 20;         ///< milliseconds that a frame is held back for
  unsigned seed = 1;
  std::vector<Cut> cuts;
};

volatile std::sig_atomic_t ended = 0;

void end(int) {
  ended = 1;
}

std::system_error failure(std::string const& aText) {
  return {errno, std::generic_category(), "wire: " + aText};
}

/// The end of one cable.
class Port {
 public:
  explicit Port(std::string aName) : mName(std::move(aName)) {
    mSocket = socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (mSocket < 0) {
      throw failure("no packet socket");
    }
    // Frames come with what the cable's driver leaves to the hardware: unfinished checksums,
    // several segments in one. Handed on in the same form, they reach the other end as they were
    // meant.
    set(PACKET_VNET_HDR);
    set(PACKET_IGNORE_OUTGOING);
    int const room = 16 << 20;
    setsockopt(mSocket, SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof room);
    attach();
  }
  Port(Port const&) = delete;
  Port& operator=(Port const&) = delete;
  ~Port() { close(mSocket); }

  int descriptor() const { return mSocket; }
  std::string const& name() const { return mName; }

  /// @return empty when there is nothing more at the moment.
  std::vector<char> receive() {
    static std::vector<char> room(offloadHeader + 65536 + 256);
    ssize_t const size = recv(mSocket, room.data(), room.size(), 0);
    return {room.data(), room.data() + std::max<ssize_t>(size, 0)};
  }

  /// A port that is full or gone loses the frame, as a cable would.
  void send(std::vector<char> const& aFrame) const {
    [[maybe_unused]] ssize_t const sent = write(mSocket, aFrame.data(), aFrame.size());
  }

 private:
  void set(int aOption) const {
    int const on = 1;
    if (setsockopt(mSocket, SOL_PACKET, aOption, &on, sizeof on) != 0) {
      throw failure("cannot prepare " + mName);
    }
  }

  void attach() const {
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_ALL);
    address.sll_ifindex = static_cast<int>(if_nametoindex(mName.c_str()));
    if (address.sll_ifindex == 0 ||
        bind(mSocket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      throw failure("cannot open " + mName);
    }
  }

  std::string mName;
  int mSocket;
};

/// A hub: what comes in at one port goes out at all others, as the rules allow.
class Wire {
 public:
  using Ports = std::vector<std::unique_ptr<Port>>;

  Wire(Rules aRules, Ports aPorts)
      : mRules(std::move(aRules)), mPorts(std::move(aPorts)), mRandom(mRules.seed) {}

  void run() {
    std::vector<pollfd> waits;
    for (auto const& port : mPorts) {
      waits.push_back({port->descriptor(), POLLIN, 0});
    }
    while (ended == 0) {
      poll(waits.data(), waits.size(), timeToNext());
      for (std::size_t i = 0; i < waits.size(); ++i) {
        if ((waits[i].revents & POLLIN) != 0) {
          receiveAt(*mPorts[i]);
        }
      }
      deliverDue();
    }
  }

  std::string summary() const {
    std::ostringstream text;
    text << "passed " << mPassed << " lost " << mLost << " doubled " << mDoubled << " held back "
         << mHeldBack << " cut " << mCut;
    return text.str();
  }

 private:
  struct Held {
    Port* port;
    std::vector<char> frame;
  };

  bool chance(double aPercent) { return mPercent(mRandom) < aPercent; }

  int timeToNext() const {
    if (mHeld.empty()) {
      return 500;
    }
    auto const left = std::chrono::ceil<Milliseconds>(mHeld.begin()->first - Clock::now());
    return std::clamp<int>(static_cast<int>(left.count()), 0, 500);
  }

  // A share of what waits there, so that one busy port does not keep the others waiting.
  void receiveAt(Port& aFrom) {
    for (int turn = 0; turn < 64; ++turn) {
      std::vector<char> const frame = aFrom.receive();
      if (frame.empty()) {
        return;
      }
      for (auto const& port : mPorts) {
        if (port.get() != &aFrom) {
          pass(aFrom, *port, frame);
        }
      }
    }
  }

  void pass(Port const& aFrom, Port& aTo, std::vector<char> const& aFrame) {
    if (isCut(aFrom) || isCut(aTo)) {
      ++mCut;
    } else if (chance(mRules.loss)) {
      ++mLost;
    } else {
      schedule(aTo, aFrame);
      if (chance(mRules.duplicate)) {
        ++mDoubled;
        schedule(aTo, aFrame);
      }
    }
  }

  bool isCut(Port const& aPort) const {
    auto const now = Clock::now() - mBegin;
    return std::any_of(mRules.cuts.begin(), mRules.cuts.end(), [&](Cut const& aCut) {
      return aCut.port == aPort.name() && aCut.from <= now && now < aCut.until;
    });
  }

  void schedule(Port& aTo, std::vector<char> const& aFrame) {
    int wait = mRules.delay;
    if (chance(mRules.reorder)) {
      ++mHeldBack;
      wait += mRules.hold;
    }
    ++mPassed;
    if (wait == 0) {
      aTo.send(aFrame);
    } else {
      mHeld.emplace(Clock::now() + Milliseconds(wait), Held{&aTo, aFrame});
    }
  }

  void deliverDue() {
    while (!mHeld.empty() && mHeld.begin()->first <= Clock::now()) {
      mHeld.begin()->second.port->send(mHeld.begin()->second.frame);
      mHeld.erase(mHeld.begin());
    }
  }

  Rules mRules;
  Ports mPorts;
  std::mt19937 mRandom;
  std::uniform_real_distribution<double> mPercent{0, 100};
  std::multimap<Clock::time_point, Held> mHeld;
  Clock::time_point const mBegin = Clock::now();
  unsigned long mPassed = 0;
  unsigned long mLost = 0;
  unsigned long mDoubled = 0;
  unsigned long mHeldBack = 0;
  unsigned long mCut = 0;
};

/// "PORT:AFTER:FOR", the times in seconds.
Cut parseCut(std::string const& aText) {
  std::istringstream text(aText);
  std::string port;
  double after = 0;
  double length = 0;
  char colon = '\0';
  if (!std::getline(text, port, ':') || !(text >> after >> colon >> length) || colon != ':') {
    throw std::runtime_error("wire: '" + aText + "' is no cut, as PORT:AFTER:FOR is");
  }
  auto const milliseconds = [](double aSeconds) {
    return Milliseconds(static_cast<long>(aSeconds * 1000));
  };
  return {port, milliseconds(after), milliseconds(after + length)};
}

void run(Rules const& aRules, std::vector<std::string> const& aNames) {
  Wire::Ports ports;
  for (std::string const& name : aNames) {
    ports.push_back(std::make_unique<Port>(name));
  }
  Wire wire(aRules, std::move(ports));
  std::cout << "joined " << aNames.size() << std::endl;
  wire.run();
  std::cout << wire.summary() << std::endl;
}

}  // namespace

int main(int aCount, char** aArguments) {
  CLI::App app{"Joins virtual cables, badly."};
  Rules rules;
  std::vector<std::string> names;
  std::vector<std::string> cuts;
  auto const percent = CLI::Range(0.0, 100.0);
  app.add_option("--loss", rules.loss, "percent of frames lost")->check(percent);
  app.add_option("--duplicate", rules.duplicate, "percent of frames doubled")->check(percent);
  app.add_option("--reorder", rules.reorder, "percent of frames held back")->check(percent);
  app.add_option("--delay", rules.delay, "milliseconds that every frame takes")
      ->check(CLI::NonNegativeNumber);
  app.add_option("--hold", rules.hold, "milliseconds that a frame is held back for")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  app.add_option("--seed", rules.seed, "seed of the chances")->capture_default_str();
  app.add_option("--cut", cuts, "PORT:AFTER:FOR, seconds: a cable that is pulled for a while")
      ->allow_extra_args(false);
  app.add_option("ports", names, "the ends of the cables")->required();
  CLI11_PARSE(app, aCount, aArguments);
  std::signal(SIGTERM, end);
  std::signal(SIGINT, end);
  try {
    std::transform(cuts.begin(), cuts.end(), std::back_inserter(rules.cuts), parseCut);
    run(rules, names);
  } catch (std::exception const& error) {
    std::cerr << error.what() << "\n";
    return 1;
  }
  return 0;
}
