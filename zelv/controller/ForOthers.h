#pragma once

#include <utility>

namespace Zelv::Controller {

/// While it lives, what its thread asks of the tree is asked on behalf of another device, and gives
/// way to what this device wants for itself when there is much of it.
class ForOthers {
 public:
  ForOthers() : mOuter(std::exchange(sActive, true)) {}
  ForOthers(ForOthers const&) = delete;
  ForOthers& operator=(ForOthers const&) = delete;
  ~ForOthers() { sActive = mOuter; }

  static bool isActive() { return sActive; }

 private:
  static inline thread_local bool sActive = false;

  bool const mOuter;
};

}  // namespace Zelv::Controller
