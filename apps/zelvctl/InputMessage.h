#pragma once

#include <cstddef>
#include <string>

namespace ZelvCtl {

/// One event of input, as it travels in one datagram.
struct InputMessage {
  /// Of the whole; receivers cut off what is beyond.
  static constexpr std::size_t MaxSize = 4094;

  std::string type;
  std::string value;  ///< goes out as it stands: it may be XML
  std::string deviceId;
  std::string user;

  std::string text() const;
};

}  // namespace ZelvCtl
