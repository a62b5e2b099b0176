#pragma once

#include <stdexcept>
#include <string>

namespace Zelv::Fuzz {

/// What an operation gives, as a text: its result, or the kind of its exception. A text that stands
/// in an exception of ours counts, one of the standard library's does not.
template <typename Operation>
std::string outcome(Operation aOperation) {
  try {
    return aOperation();
  } catch (std::out_of_range const&) {
    return "throws std::out_of_range";
  } catch (std::invalid_argument const& e) {
    return std::string("throws std::invalid_argument: ") + e.what();
  }
}

}  // namespace Zelv::Fuzz
