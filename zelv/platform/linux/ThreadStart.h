#pragma once

#include <cstddef>

namespace Zelv::Platform {

/// The place where threads of the system begin; tests put failures here.
class ThreadStart {
 public:
  using Main = void* (*)(void* aArgument);

  /// Starts a joinable thread. @return false when the system has none.
  static bool Start(std::size_t aStack, Main aMain, void* aArgument);

  /// False when a parked thread must not stand in for a new one.
  static bool MayReuse();
};

}  // namespace Zelv::Platform
