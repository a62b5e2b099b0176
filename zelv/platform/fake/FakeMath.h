#pragma once

#include <vector>

namespace Zelv::Platform::Fake {

/// The numbers behind PCMath::Random(). Without a script they are a fixed sequence from 0 to 32767.
class FakeMath {
 public:
  /// The next draws give these numbers as they are, also out of range; then the sequence goes on.
  static void Script(std::vector<long> const& aDraws);

  /// The seeds given so far.
  static std::vector<unsigned long> Seeds();

  /// How many numbers were drawn so far, seedings not counted.
  static int Draws();

  /// Forgets script, seeds and draws.
  static void Reset();
};

}  // namespace Zelv::Platform::Fake
