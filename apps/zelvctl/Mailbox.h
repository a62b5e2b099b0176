#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "apps/zelvctl/Descriptor.h"
#include "zelv/adapter/IncomingText.h"

namespace ZelvCtl {

/// Takes messages over TCP, as others of the home do, but one after the other: each is dealt with
/// before the next is confirmed, so that what one sender tells in an order is heard in that order.
///
/// Has no thread: whoever waits for descriptors calls serve(), which never waits.
class Mailbox {
 public:
  /// @param aMessage  a whole message, with its final line feed. What it throws is dropped with the
  ///                  message.
  using Receiver = std::function<void(std::string const& aMessage)>;

  /// Beyond it the connection that was silent for longest gives way.
  static constexpr std::size_t MaxConnections = 64;

  /// Listens on every address. Throws std::system_error when the port is taken.
  ///
  /// @param aPort  0 for any that is free.
  Mailbox(std::uint16_t aPort, Receiver aReceiver);

  std::uint16_t port() const;

  /// Readable for poll() when serve() has something to do.
  int descriptor() const { return mPoll.number(); }

  /// Takes in what has come.
  void serve();

 private:
  struct Connection {
    Descriptor descriptor;
    Zelv::Adapter::IncomingText text;
    std::uint64_t lastTurn = 0;
  };

  void accept();
  void read(int aDescriptor);
  void complete(int aDescriptor);
  void dropLongestSilent();
  void listenTo(int aDescriptor);

  Receiver const mReceiver;
  Descriptor const mListener;
  Descriptor const mPoll;
  std::map<int, Connection> mConnections;
  std::uint64_t mTurn = 0;
};

}  // namespace ZelvCtl
