#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "apps/zelvctl/Bell.h"
#include "apps/zelvctl/Descriptor.h"

namespace ZelvCtl {

/// Serves HTTP on the loopback interface, one connection after the other, each for one request.
/// Every wait is bounded to 20 seconds.
class FakeHttpServer {
 public:
  class Connection {
   public:
    explicit Connection(int aSocket) : mSocket(aSocket) {
      timeval const limit{20, 0};
      ::setsockopt(aSocket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
      ::setsockopt(aSocket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    }

    /// @return false once the other side has closed.
    bool send(std::string_view aBytes) const {
      while (!aBytes.empty()) {
        ssize_t const size = ::send(mSocket.number(), aBytes.data(), aBytes.size(), MSG_NOSIGNAL);
        if (size <= 0) {
          return false;
        }
        aBytes.remove_prefix(static_cast<std::size_t>(size));
      }
      return true;
    }

    /// Says nothing until the other side closes. @return whether it did.
    bool waitForEnd() const { return receive().empty(); }

    std::string receiveRequest() const {
      std::string request;
      std::size_t whole = std::string::npos;
      for (std::string piece = receive(); !piece.empty() && request.size() < whole;) {
        request += piece;
        whole = std::min(whole, sizeOf(request));
        piece = request.size() < whole ? receive() : "";
      }
      return request;
    }

    /// Ends in a way that takes away what is under way.
    void reset() const {
      linger const hard{1, 0};
      ::setsockopt(mSocket.number(), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    }

   private:
    std::string receive() const {
      std::array<char, 65536> bytes;
      ssize_t const size = ::recv(mSocket.number(), bytes.data(), bytes.size(), 0);
      return size > 0 ? std::string(bytes.data(), static_cast<std::size_t>(size)) : "";
    }

    static std::size_t sizeOf(std::string const& aRequest) {
      auto const end = aRequest.find("\r\n\r\n");
      auto const length = aRequest.find("Content-Length: ");
      return end == std::string::npos || length == std::string::npos
                 ? std::string::npos
                 : end + 4 + std::stoul(aRequest.substr(length + 16));
    }

    Descriptor mSocket;
  };

  /// Answers a request, on the server's thread.
  using Answer = std::function<void(std::string const& aRequest, Connection const& aConnection)>;

  explicit FakeHttpServer(Answer aAnswer) : mAnswer(std::move(aAnswer)), mSocket(listen()) {
    mThread = std::thread([this] { serve(); });
  }
  FakeHttpServer(FakeHttpServer const&) = delete;
  FakeHttpServer& operator=(FakeHttpServer const&) = delete;
  ~FakeHttpServer() {
    mEnd.ring();
    mThread.join();
  }

  std::string url() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(mSocket.number(), reinterpret_cast<sockaddr*>(&address), &size);
    return "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
  }

  std::vector<std::string> requests() {
    std::lock_guard const lock(mLock);
    return mRequests;
  }

 private:
  static Descriptor listen() {
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(socket.number(), reinterpret_cast<sockaddr const*>(&address), sizeof address);
    ::listen(socket.number(), 8);
    return socket;
  }

  void serve() {
    std::array<pollfd, 2> descriptors{
        {{mSocket.number(), POLLIN, 0}, {mEnd.descriptor(), POLLIN, 0}}};
    while (::poll(descriptors.data(), descriptors.size(), -1) > 0 && descriptors[1].revents == 0) {
      Connection const connection(::accept4(mSocket.number(), nullptr, nullptr, SOCK_CLOEXEC));
      std::string const request = connection.receiveRequest();
      {
        std::lock_guard const lock(mLock);
        mRequests.push_back(request);
      }
      mAnswer(request, connection);
    }
  }

  Answer const mAnswer;
  Descriptor const mSocket;
  Bell mEnd;
  std::mutex mLock;
  std::vector<std::string> mRequests;
  std::thread mThread;
};

}  // namespace ZelvCtl
