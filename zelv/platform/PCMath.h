#pragma once

/// Numbers from the platform, on any thread.
class PCMath {
 public:
  /// The platform's weak random numbers, a fallback for when the real source fails.
  ///
  /// @param aSeed  anything but 0 seeds the sequence; 0 draws from it.
  /// @return a value from 0 to 32767.
  static long Random(unsigned long aSeed);
};
