// One input event, from the datagram to the subscriber, beside the same datagram in plain system
// calls.

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "bench/Loopback.h"
#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/controller/UserController.h"
#include "zelv/interfaces/ICoreUserCallback.h"
#include "zelv/platform/PCRealDebug.h"

namespace {

using Zelv::Adapter::NetworkAdapter;
using Zelv::Bench::boundSocket;
using Zelv::Bench::freePort;
using Zelv::Bench::loopback;
using Zelv::Controller::UserController;
using Zelv::Controller::UserInput;
using Zelv::Infrastructure::GUID;
using Zelv::Infrastructure::URL;

constexpr int cBuffer = 4096;

/// What a phone sends for one key.
std::string const cDocument =
    "<OnInput><Type>Key</Type><Value>VolumeUp</Value>"
    "<DeviceGuid>6ba7b811-9dad-11d1-80b4-00c04fd430c8</DeviceGuid>"
    "<UserNickname>Anna</UserNickname></OnInput>";
std::string const cLine =
    "<Envelope><Header><MessageID>6ba7b810-9dad-11d1-80b4-00c04fd430c8</MessageID></Header><Body>" +
    cDocument + "</Body></Envelope>\n";

class Arrivals {
 public:
  Arrivals() { sem_init(&mSemaphore, 0, 0); }
  ~Arrivals() { sem_destroy(&mSemaphore); }
  void arrive() { sem_post(&mSemaphore); }
  void take() {
    while (sem_wait(&mSemaphore) != 0) {
    }
  }

 private:
  sem_t mSemaphore;
};

/// Sends datagrams one by one, each when the one before has arrived.
void sendDatagrams(benchmark::State& aState, int aPort, Arrivals& aArrivals) {
  sockaddr_in const address = loopback(aPort);
  int const sender = socket(AF_INET, SOCK_DGRAM, 0);
  for (auto _ : aState) {
    sendto(sender, cLine.data(), cLine.size(), 0, reinterpret_cast<sockaddr const*>(&address),
           sizeof address);
    aArrivals.take();
  }
  close(sender);
}

struct BareReader {
  Arrivals arrivals;
  int port = 0;
  int socket = boundSocket(SOCK_DGRAM, port);
};

void* readBare(void* aReader) {
  auto& reader = *static_cast<BareReader*>(aReader);
  char buffer[cBuffer];
  sockaddr_in from{};
  socklen_t length = sizeof from;
  while (recvfrom(reader.socket, buffer, sizeof buffer - 1, 0, reinterpret_cast<sockaddr*>(&from),
                  &length) > 0) {
    benchmark::DoNotOptimize(buffer);
    reader.arrivals.arrive();
  }
  return nullptr;
}

void bareDatagram(benchmark::State& aState) {
  BareReader reader;
  pthread_t thread;
  pthread_create(&thread, nullptr, readBare, &reader);
  sendDatagrams(aState, reader.port, reader.arrivals);
  shutdown(reader.socket, SHUT_RDWR);
  pthread_join(thread, nullptr);
  close(reader.socket);
}

/// The least that a thread of its own for subscribers costs: a queue, and one more to wake.
class BareWorker {
 public:
  explicit BareWorker(Arrivals& aArrivals) : mArrivals(aArrivals), mThread([this] { work(); }) {}
  ~BareWorker() {
    post("");
    mThread.join();
  }

  void post(std::string const& aText) {
    {
      std::lock_guard const lock(mMutex);
      mTexts.push_back(aText);
    }
    mPosted.arrive();
  }

 private:
  void work() {
    for (std::string text = take(); !text.empty(); text = take()) {
      benchmark::DoNotOptimize(text.data());
      mArrivals.arrive();
    }
  }

  std::string take() {
    mPosted.take();
    std::lock_guard const lock(mMutex);
    std::string text = std::move(mTexts.front());
    mTexts.pop_front();
    return text;
  }

  Arrivals& mArrivals;
  Arrivals mPosted;
  std::mutex mMutex;
  std::deque<std::string> mTexts;
  std::thread mThread;
};

/// Reads until the socket is shut down.
void readAndPost(int aSocket, BareWorker& aWorker) {
  char buffer[cBuffer];
  ssize_t size = recv(aSocket, buffer, sizeof buffer - 1, 0);
  while (size > 0) {
    aWorker.post(std::string(buffer, static_cast<std::size_t>(size)));
    size = recv(aSocket, buffer, sizeof buffer - 1, 0);
  }
}

void bareDatagramHandedOn(benchmark::State& aState) {
  Arrivals arrivals;
  BareWorker worker(arrivals);
  int port = 0;
  int const reader = boundSocket(SOCK_DGRAM, port);
  std::thread thread([&] { readAndPost(reader, worker); });
  sendDatagrams(aState, port, arrivals);
  shutdown(reader, SHUT_RDWR);
  thread.join();
  close(reader);
}

class Subscriber : public virtual Zelv::ICoreUserCallback {
 public:
  void onUserInput(std::string const& aType, std::string const& aValue, std::string const&,
                   std::string const&, GUID const&) override {
    benchmark::DoNotOptimize(aType.data());
    benchmark::DoNotOptimize(aValue.data());
    arrivals.arrive();
  }
  void onStatus(Zelv::StatusInformation const&, GUID const&) override {}

  Arrivals arrivals;
};

/// A controller with its thread and one subscriber, without a tree.
class Input {
 public:
  Input() : mController([](GUID) -> Zelv::IBase* { return nullptr; }) {
    PCRealDebug::Silence();
    mController.initialize();
    PCRealDebug::SetLevel(PCRealDebug::Warning);
    mController.subscribeUser("Key", &mSubscriber);
  }

  UserController& controller() { return mController; }
  Arrivals& arrivals() { return mSubscriber.arrivals; }

 private:
  Subscriber mSubscriber;
  UserController mController;
};

void inputDatagram(benchmark::State& aState) {
  Input input;
  int const port = freePort(SOCK_DGRAM);
  URL const url("udp", "127.0.0.1", std::to_string(port), "");
  if (NetworkAdapter::getInstance()->registerService(url, &input.controller(), "") ==
      GUID::nullGUID) {
    std::abort();
  }
  sendDatagrams(aState, port, input.arrivals());
  delete NetworkAdapter::getInstance();
}

/// The same without the wire: reading the text, and the way to the subscriber's thread.
void inputMessage(benchmark::State& aState) {
  Input input;
  for (auto _ : aState) {
    input.controller().onMessage(cLine, cLine);
    input.arrivals().take();
  }
}

void inputText(benchmark::State& aState) {
  for (auto _ : aState) {
    UserInput const input(cDocument);
    benchmark::DoNotOptimize(input.getType().data());
  }
}

BENCHMARK(bareDatagram)->UseRealTime();
BENCHMARK(bareDatagramHandedOn)->UseRealTime();
BENCHMARK(inputDatagram)->UseRealTime();
BENCHMARK(inputMessage)->UseRealTime();
BENCHMARK(inputText);

}  // namespace
