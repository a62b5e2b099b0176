#pragma once

#include <string>
#include <vector>

#include "zelv/core/Core.h"
#include "zelv/interfaces/Diagnostics.h"

namespace Zelv {

/// Asks the parts of the running system for what Diagnostics tells. Takes only leaf locks and that
/// of the subscriptions, each for itself, so that it may be asked from within any callback.
class CoreDiagnosis {
 public:
  explicit CoreDiagnosis(Core& aCore) : mCore(aCore) {}

  std::vector<Diagnostics::Explanation> explain(std::string const& aXPath);
  Diagnostics::Statistics statistics();

 private:
  using Statistics = Diagnostics::Statistics;

  void askData(Statistics& aStatistics);
  void askRemoteData(Statistics& aStatistics) const;
  void askCommands(Statistics& aStatistics) const;
  void askCalls(Statistics& aStatistics);
  void askPeers(Statistics& aStatistics);
  void askDeparted(Core::DiscoveryService const& aDiscovery, Statistics& aStatistics) const;

  Core& mCore;
};

}  // namespace Zelv
