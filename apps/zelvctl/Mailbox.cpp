#include "apps/zelvctl/Mailbox.h"

#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <system_error>
#include <utility>

namespace ZelvCtl {

namespace {

constexpr int backlog = 128;
constexpr std::size_t pieceSize = 65536;

[[noreturn]] void fail(char const* aWhat) {
  throw std::system_error(errno, std::generic_category(), aWhat);
}

Descriptor listenAt(std::uint16_t aPort) {
  Descriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  int const yes = 1;
  ::setsockopt(listener.number(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(aPort);
  if (::bind(listener.number(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0 ||
      ::listen(listener.number(), backlog) != 0) {
    fail("cannot listen for messages");
  }
  return listener;
}

}  // namespace

Mailbox::Mailbox(std::uint16_t aPort, Receiver aReceiver)
    : mReceiver(std::move(aReceiver)),
      mListener(listenAt(aPort)),
      mPoll(::epoll_create1(EPOLL_CLOEXEC)) {
  listenTo(mListener.number());
}

std::uint16_t Mailbox::port() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ::getsockname(mListener.number(), reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

void Mailbox::listenTo(int aDescriptor) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = aDescriptor;
  if (::epoll_ctl(mPoll.number(), EPOLL_CTL_ADD, aDescriptor, &event) != 0) {
    fail("cannot wait for messages");
  }
}

void Mailbox::serve() {
  std::array<epoll_event, 16> events;
  int const count = ::epoll_wait(mPoll.number(), events.data(), static_cast<int>(events.size()), 0);
  for (int index = 0; index < count; ++index) {
    int const descriptor = events[static_cast<std::size_t>(index)].data.fd;
    if (descriptor == mListener.number()) {
      accept();
    } else {
      read(descriptor);
    }
  }
}

void Mailbox::accept() {
  Descriptor accepted(
      ::accept4(mListener.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  int const number = accepted.number();
  if (number < 0) {
    // Who comes is kept waiting by the kernel; room for him is made here.
    if (errno == EMFILE || errno == ENFILE) {
      dropLongestSilent();
    }
    return;
  }
  if (mConnections.size() >= MaxConnections) {
    dropLongestSilent();
  }
  listenTo(number);
  Connection& connection = mConnections[number];
  connection.descriptor = std::move(accepted);
  connection.lastTurn = ++mTurn;
}

void Mailbox::dropLongestSilent() {
  auto const silent = std::min_element(mConnections.begin(), mConnections.end(),
                                       [](auto const& aOne, auto const& aOther) {
                                         return aOne.second.lastTurn < aOther.second.lastTurn;
                                       });
  if (silent != mConnections.end()) {
    mConnections.erase(silent);
  }
}

// As everywhere in the home: a message ends with the read that ends in a line feed, and a NUL ends
// what was read with it.
void Mailbox::read(int aDescriptor) {
  auto const entry = mConnections.find(aDescriptor);
  if (entry == mConnections.end()) {
    return;  // it has given way to another just now
  }
  std::array<char, pieceSize> piece;
  ssize_t const size = ::recv(aDescriptor, piece.data(), piece.size(), 0);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    return;
  }
  auto const length = static_cast<std::size_t>(std::max<ssize_t>(size, 0));
  entry->second.lastTurn = ++mTurn;
  if (length == 0 || !entry->second.text.append(piece.data(), ::strnlen(piece.data(), length))) {
    mConnections.erase(entry);
  } else if (piece[length - 1] == '\n') {
    complete(aDescriptor);
  }
}

void Mailbox::complete(int aDescriptor) {
  auto const connection = mConnections.extract(aDescriptor);
  ::send(aDescriptor, "\n", 1, MSG_NOSIGNAL | MSG_DONTWAIT);
  try {
    mReceiver(connection.mapped().text.text());
  } catch (std::exception const&) {
    // a stranger's message must not end what others wait for
  }
}

}  // namespace ZelvCtl
