#include "zelv/core/CoreDiagnosis.h"

#include <algorithm>
#include <cstdint>

#include "zelv/controller/RemoteDataController.h"
#include "zelv/core/DiscoveryService.h"
#include "zelv/core/MultiDevice.h"
#include "zelv/platform/PCThread.h"
#include "zelv/platform/PCTime.h"

namespace Zelv {

using Controller::DeliveryExplanation;
using Controller::DeviceServiceQueue;
using Controller::eDelivery;
using Controller::LongestCall;
using Controller::OneTimeRequests;
using Controller::RemoteDataController;
using Controller::RemoteDeviceQueues;

namespace {

Diagnostics::Rule ruleOf(eDelivery aDelivery) {
  using Rule = Diagnostics::Rule;
  switch (aDelivery) {
    case eDelivery::Direct:
      return Rule::SamePath;
    case eDelivery::ReRead:
      return Rule::Nested;
    case eDelivery::SkipRemote:
      return Rule::RemoteData;
    case eDelivery::SkipOneTime:
      return Rule::OneTime;
    case eDelivery::SkipExcluded:
      return Rule::Excluded;
    case eDelivery::SkipSibling:
      return Rule::Sibling;
    case eDelivery::SkipAttribute:
      return Rule::Attribute;
    case eDelivery::SkipUnmatched:
      return Rule::Unmatched;
    case eDelivery::SkipNoChange:
      break;
  }
  return Rule::NoChange;
}

bool isTold(DeliveryExplanation const& aExplanation) {
  return !aExplanation.subscriber.empty() &&
         (aExplanation.delivery == eDelivery::Direct || aExplanation.delivery == eDelivery::ReRead);
}

Diagnostics::DeviceQueue queueOf(char const* aService, std::string const& aDevice,
                                 std::string const& aUrl,
                                 DeviceServiceQueue::Counters const& aCounters) {
  return {aService,       aDevice,          aUrl, aCounters.length, aCounters.bytes,
          aCounters.sent, aCounters.dropped};
}

/// Keeps the longer of two.
void take(LongestCall::Record const& aRecord, Diagnostics::Call& aLongest) {
  if (aRecord.nanoseconds > aLongest.nanoseconds) {
    aLongest = {aRecord.operation, aRecord.callee, aRecord.subject, aRecord.nanoseconds};
  }
}

}  // namespace

std::vector<Diagnostics::Explanation> CoreDiagnosis::explain(std::string const& aXPath) {
  std::vector<Diagnostics::Explanation> explanations;
  for (DeliveryExplanation const& one : mCore.mDataController.explain(aXPath)) {
    explanations.push_back(
        {one.id, one.xpath, one.subscriber, ruleOf(one.delivery), isTold(one), one.withheld});
  }
  return explanations;
}

Diagnostics::Statistics CoreDiagnosis::statistics() {
  Statistics statistics;
  askData(statistics);
  askRemoteData(statistics);
  askCommands(statistics);
  statistics.inputs = mCore.mUserController.getQueueSize();
  askCalls(statistics);
  statistics.threads = PCThread::Running();
  statistics.parkedThreads = PCThread::Parked();
  askPeers(statistics);
  return statistics;
}

void CoreDiagnosis::askData(Statistics& aStatistics) {
  aStatistics.dataTasks = mCore.mDataController.getQueueSize();
  OneTimeRequests const requests =
      mCore.mDataController.getSubscriptions().getRequests(Diagnostics::cOldestRequests);
  aStatistics.requests = requests.count;
  for (OneTimeRequests::Request const& request : requests.oldest) {
    aStatistics.oldestRequests.push_back(
        {request.id, request.xpath, request.age, request.answered});
  }
}

void CoreDiagnosis::askRemoteData(Statistics& aStatistics) const {
  auto const* const remote =
      dynamic_cast<RemoteDataController const*>(mCore.mDataController.getRemoteHandler());
  if (remote == nullptr) {
    return;
  }
  aStatistics.remoteContexts = remote->getContexts().size();
  aStatistics.remoteSubscriptions = remote->getContexts().countSubscriptions();
  for (RemoteDeviceQueues::State const& queue : remote->getQueues().states()) {
    aStatistics.deviceQueues.push_back(queueOf("data", queue.deviceId, queue.url, queue.counters));
  }
}

void CoreDiagnosis::askCommands(Statistics& aStatistics) const {
  Controller::CommandController::Statistics const commands =
      mCore.mCommandController.getStatistics();
  aStatistics.commandTasks = commands.mTasks;
  aStatistics.pendingCommands = commands.mPendingCommands;
  aStatistics.commandCallbacks = commands.mCallbacks;
  for (auto const& queue : commands.mQueues) {
    aStatistics.deviceQueues.push_back(
        queueOf("command", queue.mDeviceId, queue.mURL, queue.mCounters));
  }
  take(commands.mLongestCallback, aStatistics.longestCallback);
}

void CoreDiagnosis::askCalls(Statistics& aStatistics) {
  Controller::DataController& data = mCore.mDataController;
  take(data.getLocalHandler().getLongestProvider().get(), aStatistics.longestProviderCall);
  for (LongestCall const* calls :
       {&data.getLocalHandler().getLongestCallback(), &data.getSubscriptions().getLongestCallback(),
        &mCore.mTimerController.getLongestCallback(),
        &mCore.mUserController.getLongestCallback()}) {
    take(calls->get(), aStatistics.longestCallback);
  }
}

// The stamps are by the wall clock. When it has jumped and discovery has not noticed yet, an age
// may be wrong until the next message.
void CoreDiagnosis::askPeers(Statistics& aStatistics) {
  auto* const devices = dynamic_cast<Core::MultiDevice*>(mCore.getComponent("MultiDevice"));
  Core::DiscoveryService* const discovery = devices != nullptr ? devices->getDiscovery() : nullptr;
  if (discovery == nullptr) {
    return;
  }
  std::int64_t const now = PCTime::EpochTime();
  for (RemoteDevice const& device : discovery->getDevices()) {
    aStatistics.peers.push_back(
        {device.type, device.id, device.name, std::max<std::int64_t>(0, now - device.stamp)});
  }
  askDeparted(*discovery, aStatistics);
}

void CoreDiagnosis::askDeparted(Core::DiscoveryService const& aDiscovery,
                                Statistics& aStatistics) const {
  std::int64_t const now = PCTime::MonotonicMs();
  for (DepartedDevices::Entry const& device : aDiscovery.getDeparted()) {
    bool const isBack =
        std::any_of(aStatistics.peers.begin(), aStatistics.peers.end(),
                    [&](Diagnostics::Peer const& aPeer) { return aPeer.id == device.id; });
    if (!isBack) {
      aStatistics.departedPeers.push_back({device.type, device.id, device.name,
                                           (now - device.left) / 1000,
                                           device.reason == DepartedDevices::Reason::Bye});
    }
  }
}

}  // namespace Zelv
