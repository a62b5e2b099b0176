#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zelv/interfaces/GUID.h"

namespace Zelv::Controller {

/// The one-time entries that are in the table of subscriptions, for diagnostics.
struct OneTimeRequests {
  struct Request {
    GUID id;
    std::string xpath;
    /// Milliseconds since it was made.
    std::int64_t age;
    /// An answer came. The entry stays, until its requester or the bound of such entries ends it.
    bool answered;
  };

  /// Of all.
  std::size_t count = 0;
  /// The oldest of them, oldest first.
  std::vector<Request> oldest;
};

}  // namespace Zelv::Controller
