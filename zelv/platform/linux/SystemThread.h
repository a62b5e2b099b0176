#pragma once

#include <cstddef>

namespace Zelv::Platform {

/// Threads as the system gives them.
class SystemThread {
 public:
  /// Starts a joinable thread with at least this much stack for itself. It takes no signals but
  /// those of its own faults, so that the handlers of the host run on the host's threads.
  static bool Start(std::size_t aStack, void* (*aMain)(void*), void* aArgument);

  /// Names the calling thread for debuggers; only the first 15 characters show.
  static void SetName(char const* aName);
};

}  // namespace Zelv::Platform
