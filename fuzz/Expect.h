#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Zelv::Fuzz {

/// Ends the process with a message when what was found is not what the oracle says: that is what
/// the fuzzer and the replay take for a finding.
inline void expectEqual(char const* aWhat, std::string const& aFound,
                        std::string const& aExpected) {
  if (aFound != aExpected) {
    std::fprintf(stderr, "%s: found '%s', expected '%s'\n", aWhat, aFound.c_str(),
                 aExpected.c_str());
    std::abort();
  }
}

inline void expect(char const* aWhat, bool aHolds) {
  if (!aHolds) {
    std::fprintf(stderr, "%s does not hold\n", aWhat);
    std::abort();
  }
}

}  // namespace Zelv::Fuzz
