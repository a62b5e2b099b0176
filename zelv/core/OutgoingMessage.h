#pragma once

#include <string>

#include "zelv/infrastructure/URL.h"

namespace Zelv {

/// A message of discovery with where it goes.
struct OutgoingMessage {
  Infrastructure::URL mUrl;
  std::string mText;
  std::string mLocalInterface;  ///< for a group: the address of the interface; empty otherwise
};

}  // namespace Zelv
