#pragma once

#include <netinet/in.h>
#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

namespace Zelv::Bench {

sockaddr_in addressOf(char const* aAddress, std::uint16_t aPort);

/// One message in its plainest form: a connection, the line, the byte that confirms it, the end.
bool bareSend(sockaddr_in const& aTo, std::string const& aLine);

/// Its receiver in its plainest form: a new thread for each connection, gone at its end.
class BareListener {
 public:
  /// @param aTaken  called on that thread when the line is confirmed.
  ///
  /// @throws std::runtime_error when the port is not to be had.
  BareListener(std::uint16_t aPort, std::function<void()> aTaken);
  BareListener(BareListener const&) = delete;
  BareListener& operator=(BareListener const&) = delete;
  ~BareListener();

 private:
  struct Connection {
    BareListener* mListener;
    int mSocket;
  };

  static void* main(void* aSelf);
  static void* serve(void* aConnection);
  void accept();

  std::function<void()> const mTaken;
  std::atomic<int> mServed{0};
  int mSocket;
  pthread_t mThread{};
};

}  // namespace Zelv::Bench
