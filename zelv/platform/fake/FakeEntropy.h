#pragma once

#include <string>

namespace Zelv::Platform::Fake {

/// The bytes behind Entropy. Without a script they are a fixed sequence that does not repeat itself
/// within a process, not even after Reset().
class FakeEntropy {
 public:
  /// The next aCount calls of Entropy::Fill() fail.
  static void FailNext(int aCount);

  /// Every call fails, until Reset().
  static void FailAll();

  /// These bytes come next, in this order; then the sequence goes on.
  static void Script(std::string const& aBytes);

  /// Takes faults and script away.
  static void Reset();
};

}  // namespace Zelv::Platform::Fake
