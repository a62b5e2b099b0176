#pragma once

#include <stdexcept>

namespace ZelvCtl {

/// The signal to stop has come while something was waited for.
class Interrupted : public std::runtime_error {
 public:
  Interrupted() : std::runtime_error("interrupted") {}
};

}  // namespace ZelvCtl
