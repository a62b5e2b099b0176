#pragma once

#include <optional>
#include <string>
#include <vector>

#include "zelv/Zelv.h"

namespace ZelvTv {

/// What the library tells of itself, as lines for people.
class StatisticsPrinter {
 public:
  using Lines = std::vector<std::string>;

  /// "explain ID RULE SUBSCRIBER PATH REASON" for each subscription, then "explained N PATH".
  static Lines Explain(std::vector<Zelv::Diagnostics::Explanation> const& aExplanations,
                       std::string const& aPath);

  /// A line for each thing there is to tell, then "stats N", the number of lines before it. An
  /// error when no system runs.
  static Lines Statistics(std::optional<Zelv::Diagnostics::Statistics> const& aStatistics);
};

}  // namespace ZelvTv
