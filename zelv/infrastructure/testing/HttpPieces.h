#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Zelv::Infrastructure::Testing {

/// A request cut into pieces as a socket might: the first byte of the input tells how. 0 gives one
/// piece; any other number pieces of lengths that follow from it.
inline std::vector<std::string> httpPieces(std::string const& aInput) {
  if (aInput.empty()) {
    return {};
  }
  std::string const text = aInput.substr(1);
  std::uint32_t state = static_cast<unsigned char>(aInput[0]);
  if (state == 0) {
    return {text};
  }
  std::vector<std::string> pieces;
  for (std::size_t at = 0; at < text.size();) {
    state = state * 1664525U + 1013904223U;
    std::size_t const length = 1 + (state >> 24) % 40;
    pieces.push_back(text.substr(at, length));
    at += length;
  }
  return pieces;
}

}  // namespace Zelv::Infrastructure::Testing
