// One message through the adapter beside the same exchange in plain system calls.

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>

#include "bench/Loopback.h"
#include "zelv/adapter/NetworkAdapter.h"

namespace {

using Zelv::Adapter::NetworkAdapter;
using Zelv::Bench::boundSocket;
using Zelv::Bench::freePort;
using Zelv::Bench::loopback;
using Zelv::Infrastructure::GUID;
using Zelv::Infrastructure::URL;

constexpr int cBuffer = 4096;

/// What the sender writes; the line end makes 600 bytes of it.
std::string const cText(599, 'x');
std::string const cLine = cText + "\n";

/// The receiving side in its plainest form: a new thread for each connection, gone at its end.
class BareListener {
 public:
  BareListener() : mSocket(boundSocket(SOCK_STREAM, mPort)) {
    listen(mSocket, 2);
    pthread_create(&mThread, nullptr, &BareListener::main, this);
  }
  ~BareListener() {
    shutdown(mSocket, SHUT_RDWR);
    pthread_join(mThread, nullptr);
    close(mSocket);
  }
  int port() const { return mPort; }

 private:
  static void* main(void* aSelf) {
    int const listener = static_cast<BareListener*>(aSelf)->mSocket;
    pthread_attr_t detached;
    pthread_attr_init(&detached);
    pthread_attr_setdetachstate(&detached, PTHREAD_CREATE_DETACHED);
    for (int peer = accept(listener, nullptr, nullptr); peer >= 0;
         peer = accept(listener, nullptr, nullptr)) {
      pthread_t thread;
      pthread_create(&thread, &detached, &BareListener::serve,
                     reinterpret_cast<void*>(static_cast<std::intptr_t>(peer)));
    }
    pthread_attr_destroy(&detached);
    return nullptr;
  }

  static void* serve(void* aPeer) {
    int const peer = static_cast<int>(reinterpret_cast<std::intptr_t>(aPeer));
    char buffer[cBuffer];
    ssize_t size = recv(peer, buffer, sizeof buffer - 1, 0);
    while (size > 0 && buffer[size - 1] != '\n') {
      size = recv(peer, buffer, sizeof buffer - 1, 0);
    }
    send(peer, "\n", 1, MSG_NOSIGNAL);
    close(peer);
    return nullptr;
  }

  int mPort = 0;
  int mSocket;
  pthread_t mThread{};
};

void bareMessage(benchmark::State& aState) {
  BareListener const listener;
  sockaddr_in const address = loopback(listener.port());
  for (auto _ : aState) {
    int const peer = socket(AF_INET, SOCK_STREAM, 0);
    char answer[cBuffer];
    if (connect(peer, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0 ||
        send(peer, cLine.data(), cLine.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(cLine.size()) ||
        recv(peer, answer, sizeof answer, 0) != 1) {
      aState.SkipWithError("an exchange failed");
    }
    close(peer);
  }
}

/// Counts what arrives.
class Arrivals : public Zelv::NetworkMessageCallback {
 public:
  Arrivals() { sem_init(&mSemaphore, 0, 0); }
  virtual ~Arrivals() { sem_destroy(&mSemaphore); }

  void onMessage(std::string const& aMessage, std::string const&) override {
    benchmark::DoNotOptimize(aMessage.data());
    arrive();
  }
  void arrive() { sem_post(&mSemaphore); }
  void take() {
    while (sem_wait(&mSemaphore) != 0) {
    }
  }

 private:
  sem_t mSemaphore;
};

/// A service of the adapter, which is deleted at the end.
class Service {
 public:
  Service(char const* aProtocol, int aPort)
      : mUrl(aProtocol, "127.0.0.1", std::to_string(aPort), "") {
    if (NetworkAdapter::getInstance()->registerService(mUrl, &mArrivals, "") == GUID::nullGUID) {
      std::abort();
    }
  }
  ~Service() { delete NetworkAdapter::getInstance(); }

  Arrivals& arrivals() { return mArrivals; }
  URL const& url() const { return mUrl; }

 private:
  Arrivals mArrivals;
  URL const mUrl;
};

void message(benchmark::State& aState) {
  Service const service("tcp", freePort(SOCK_STREAM));
  NetworkAdapter* const adapter = NetworkAdapter::getInstance();
  for (auto _ : aState) {
    if (adapter->send(service.url(), cText, "", 1) == GUID::nullGUID) {
      aState.SkipWithError("a message failed");
    }
  }
}

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

void datagram(benchmark::State& aState) {
  int const port = freePort(SOCK_DGRAM);
  Service service("udp", port);
  sendDatagrams(aState, port, service.arrivals());
}

BENCHMARK(bareMessage)->UseRealTime();
BENCHMARK(message)->UseRealTime();
BENCHMARK(bareDatagram)->UseRealTime();
BENCHMARK(datagram)->UseRealTime();

}  // namespace
