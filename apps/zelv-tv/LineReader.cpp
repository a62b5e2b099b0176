#include "apps/zelv-tv/LineReader.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace ZelvTv {

void LineReader::Read() {
  std::array<char, 65536> buffer;
  ssize_t const count = ::read(mDescriptor, buffer.data(), buffer.size());
  if (count > 0) {
    mBytes.append(buffer.data(), static_cast<std::size_t>(count));
  } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
    mEnded = true;
  }
}

LineReader::Result LineReader::Next(std::string& aLine) {
  std::size_t end = mBytes.find('\n', mSearched);
  bool const whole = end != std::string::npos;
  if (!whole && mBytes.size() > kMaximumLine) {
    // What has come of it is enough to know; the rest is not kept.
    mPassingOver = true;
    mBytes.clear();
  }
  if (!whole && !(mEnded && (!mBytes.empty() || mPassingOver))) {
    mSearched = mBytes.size();
    return Result::None;
  }
  end = std::min(end, mBytes.size());
  aLine.assign(mBytes, 0, end);
  mBytes.erase(0, end + (whole ? 1 : 0));
  mSearched = 0;
  if (std::exchange(mPassingOver, false) || aLine.size() > kMaximumLine) {
    return Result::TooLong;
  }
  if (!aLine.empty() && aLine.back() == '\r') {
    aLine.pop_back();
  }
  return Result::Line;
}

}  // namespace ZelvTv
