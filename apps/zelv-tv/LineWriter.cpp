#include "apps/zelv-tv/LineWriter.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string>

namespace ZelvTv {

bool LineWriter::Line(std::string_view aText) {
  return Text(std::string(aText) + '\n');
}

bool LineWriter::Text(std::string_view aText) {
  while (!aText.empty()) {
    if (!waitForRoom()) {
      return false;
    }
    // A pipe that is ready takes this much without waiting.
    ssize_t const count =
        ::write(mDescriptor, aText.data(), std::min<std::size_t>(aText.size(), PIPE_BUF));
    if (count >= 0) {
      aText.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR && errno != EAGAIN) {
      return false;
    }
  }
  return true;
}

void LineWriter::TextIfRoom(std::string_view aText) {
  pollfd descriptor{mDescriptor, POLLOUT, 0};
  if (::poll(&descriptor, 1, 0) == 1) {
    [[maybe_unused]] ssize_t const count = ::write(mDescriptor, aText.data(), aText.size());
  }
}

bool LineWriter::waitForRoom() const {
  std::array<pollfd, 2> descriptors{{{mDescriptor, POLLOUT, 0}, {mStop, POLLIN, 0}}};
  while (::poll(descriptors.data(), descriptors.size(), -1) < 0) {
    if (errno != EINTR) {
      return false;
    }
  }
  return descriptors[1].revents == 0;
}

}  // namespace ZelvTv
