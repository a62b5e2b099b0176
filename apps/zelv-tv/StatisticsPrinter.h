#pragma once

#include <string>
#include <vector>

#include "zelv/Zelv.h"

namespace ZelvTv {

/// What the library tells of itself, as lines for people.
class StatisticsPrinter {
 public:
  using Lines = std::vector<std::string>;

  /// One line a subscription: "rule ID RULE SUBSCRIBER PATH", and behind it "why ID REASON"; at the
  /// end "explained N PATH".
  static Lines Explain(std::vector<Zelv::Diagnostics::Explanation> const& aExplanations,
                       std::string const& aPath);

  /// Nothing but an error when no system runs; otherwise "stats N" at the end, with the number of
  /// lines before it.
  static Lines Statistics(std::optional<Zelv::Diagnostics::Statistics> const& aStatistics);
};

}  // namespace ZelvTv
