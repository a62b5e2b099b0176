#pragma once

#include "zelv/platform/Export.h"

/// The television that the library runs in.
class ZELV_EXPORT TCTv {
 public:
  /// Size of the buffer that GetProductCode() fills, in bytes.
  static constexpr int ProductCodeSize = 128;

  /// Writes the set's product code, NUL-terminated, into aBuffer, which the caller owns and which
  /// holds ProductCodeSize bytes.
  ///
  /// @param aFlag  a choice of the platform's; the library passes false.
  /// @return false when the set has no product code; the buffer is then as it was.
  bool GetProductCode(char* aBuffer, bool aFlag);

  /// For host programs: sets the product code before the library starts. It is cut at 127 bytes; an
  /// empty text means that there is none.
  void SetProductCode(char const* aProductCode);

 private:
  char mProductCode[ProductCodeSize] = {};
};

/// The one television of the process.
extern ZELV_EXPORT TCTv g_AppTV;
