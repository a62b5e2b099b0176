#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "zelv/controller/DataSubscriptionManager.h"
#include "zelv/controller/testing/DeliveryModel.h"
#include "zelv/controller/testing/FakeCoreData.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Controller::Testing {

/// The subscription manager with a tree of its own, and all that is seen of it in one order. Takes
/// the log while it lives.
class DeliveryTrial {
 public:
  using Events = DeliveryModel::Events;

  /// @param aDevice  this device's identifier, or empty for none.
  DeliveryTrial(std::size_t aSubscribers, std::string const& aDevice)
      : device(aDevice.empty() ? GUID::nullGUID.toString() : GUID(aDevice).toString()),
        mCallbacks(aSubscribers) {
    PCRealDebug::SetSink(collect, this);
    for (RecordingCallback& callback : mCallbacks) {
      callback.reaction = [this](Heard const& aHeard) { heard(aHeard); };
    }
    mCoreData.reaction = [this](FakeCoreData::Request const& aRequest) {
      mEvents.push_back("read " + aRequest.path);
    };
    if (!aDevice.empty()) {
      mManager.setLocalDeviceId(GUID(aDevice));
    }
  }
  DeliveryTrial(DeliveryTrial const&) = delete;
  DeliveryTrial& operator=(DeliveryTrial const&) = delete;
  ~DeliveryTrial() {
    PCRealDebug::SetSink(nullptr, nullptr);
    PCRealDebug::SetLevel(PCRealDebug::Warning);
  }

  /// As the model writes it.
  std::string const device;

  /// What there is in the table, as the model wants it.
  std::vector<DeliveryModel::Subscription> table;

  /// Called when a subscriber was told, under the manager's lock.
  std::function<void(std::string const& aId)> whenTold;

  std::string add(std::string const& aPath, std::size_t aSubscriber, bool aOneTime) {
    std::string id =
        mManager.addSubscription(aPath, subscriber(aSubscriber), nullptr, aOneTime).toString();
    table.push_back({id, aPath, aOneTime, aSubscriber});
    return id;
  }

  void remove(std::string const& aId) {
    mManager.removeSubscription(GUID(aId));
    std::erase_if(table, [&aId](auto const& aEntry) { return aEntry.id == aId; });
  }

  /// What a change brings about at once.
  Events notify(DeliveryModel::Change const& aChange, bool aDetail) {
    PCRealDebug::SetLevel(aDetail ? PCRealDebug::Detail : PCRealDebug::Warning);
    mEvents.clear();
    mManager.notifySubscribers(aChange.path, aChange.value, subscriber(aChange.excluded));
    return mEvents;
  }

  /// What the tree's answers to all requests so far bring about.
  Events answer(std::string const& aValue) {
    PCRealDebug::SetLevel(PCRealDebug::Warning);
    mEvents.clear();
    std::vector<FakeCoreData::Request> requests;
    requests.swap(mCoreData.requests);
    for (FakeCoreData::Request const& request : requests) {
      mCoreData.answer(request, aValue);
    }
    return mEvents;
  }

 private:
  IBaseDataCallback* subscriber(std::size_t aNumber) {
    return aNumber == 0 ? nullptr : &mCallbacks.at(aNumber - 1);
  }

  void heard(Heard const& aHeard) {
    std::string const id = aHeard.id.toString();
    mEvents.push_back("told " + id + " " + aHeard.path + " " + aHeard.value);
    if (whenTold) {
      whenTold(id);
    }
  }

  static void collect(unsigned long, char const* aText, void* aTrial) {
    static_cast<DeliveryTrial*>(aTrial)->mEvents.push_back(aText);
  }

  Events mEvents;
  FakeCoreData mCoreData;
  std::vector<RecordingCallback> mCallbacks;
  DataSubscriptionManager mManager{FakeCoreData::find};
};

}  // namespace Zelv::Controller::Testing
