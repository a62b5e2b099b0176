#include "zelv/platform/TCTv.h"

#include <cstring>

TCTv g_AppTV;

bool TCTv::GetProductCode(char* aBuffer, bool /*aFlag*/) {
  if (mProductCode[0] == '\0') {
    return false;
  }
  std::memcpy(aBuffer, mProductCode, sizeof mProductCode);
  return true;
}

void TCTv::SetProductCode(char const* aProductCode) {
  std::memset(mProductCode, 0, sizeof mProductCode);
  std::strncpy(mProductCode, aProductCode, sizeof mProductCode - 1);
}
