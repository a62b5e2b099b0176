#include "bench/BareExchange.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <thread>
#include <utility>

namespace Zelv::Bench {

namespace {

constexpr int cBuffer = 4096;

int listenAt(std::uint16_t aPort) {
  int const listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  int const yes = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  sockaddr_in const address = addressOf("0.0.0.0", aPort);
  if (bind(listener, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0 ||
      listen(listener, 2) != 0) {
    throw std::runtime_error("port " + std::to_string(aPort) + " is not to be had");
  }
  return listener;
}

}  // namespace

sockaddr_in addressOf(char const* aAddress, std::uint16_t aPort) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(aPort);
  inet_pton(AF_INET, aAddress, &address.sin_addr);
  return address;
}

bool bareSend(sockaddr_in const& aTo, std::string const& aLine) {
  int const peer = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  char answer[cBuffer];
  bool const done =
      connect(peer, reinterpret_cast<sockaddr const*>(&aTo), sizeof aTo) == 0 &&
      send(peer, aLine.data(), aLine.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(aLine.size()) &&
      recv(peer, answer, sizeof answer, 0) == 1;
  close(peer);
  return done;
}

BareListener::BareListener(std::uint16_t aPort, std::function<void()> aTaken)
    : mTaken(std::move(aTaken)), mSocket(listenAt(aPort)) {
  pthread_create(&mThread, nullptr, &BareListener::main, this);
}

BareListener::~BareListener() {
  shutdown(mSocket, SHUT_RDWR);
  pthread_join(mThread, nullptr);
  close(mSocket);
  while (mServed > 0) {
    std::this_thread::yield();
  }
}

void* BareListener::main(void* aSelf) {
  static_cast<BareListener*>(aSelf)->accept();
  return nullptr;
}

void BareListener::accept() {
  pthread_attr_t detached;
  pthread_attr_init(&detached);
  pthread_attr_setdetachstate(&detached, PTHREAD_CREATE_DETACHED);
  for (int peer = ::accept(mSocket, nullptr, nullptr); peer >= 0;
       peer = ::accept(mSocket, nullptr, nullptr)) {
    ++mServed;
    pthread_t thread{};
    pthread_create(&thread, &detached, &BareListener::serve, new Connection{this, peer});
  }
  pthread_attr_destroy(&detached);
}

void* BareListener::serve(void* aConnection) {
  auto* const connection = static_cast<Connection*>(aConnection);
  auto [listener, peer] = *connection;
  delete connection;
  char buffer[cBuffer];
  ssize_t size = recv(peer, buffer, sizeof buffer - 1, 0);
  while (size > 0 && buffer[size - 1] != '\n') {
    size = recv(peer, buffer, sizeof buffer - 1, 0);
  }
  if (size > 0) {
    send(peer, "\n", 1, MSG_NOSIGNAL);
    listener->mTaken();
  }
  close(peer);
  --listener->mServed;
  return nullptr;
}

}  // namespace Zelv::Bench
