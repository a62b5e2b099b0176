#pragma once

#include <functional>
#include <string>
#include <vector>

#include "zelv/interfaces/ICoreData.h"

namespace Zelv::Controller::Testing {

/// A tree that answers when the test says so. One at a time: it is what find() finds.
class FakeCoreData : public virtual ICoreData {
 public:
  struct Request {
    std::string path;
    ContextInformation const* context;
    IBaseDataCallback* callback;
    GUID id;
  };

  FakeCoreData() { sCurrent = this; }
  FakeCoreData(FakeCoreData const&) = delete;
  FakeCoreData& operator=(FakeCoreData const&) = delete;
  ~FakeCoreData() override { sCurrent = nullptr; }

  static ICoreData* find() { return sCurrent; }

  std::vector<Request> requests;
  /// Called with each request, after it was noted.
  std::function<void(Request const&)> reaction;
  /// Makes the ids of requests; random ones unless set.
  std::function<GUID(std::string const& aXPath, ContextInformation const* aContext,
                     IBaseDataCallback* aCallback)>
      makeId;

  void answer(Request const& aRequest, std::string const& aValue) const {
    aRequest.callback->onData(aRequest.path, aValue, aRequest.context, aRequest.id);
  }

  void fail(Request const& aRequest) const {
    aRequest.callback->onStatus(StatusInformation(std::exception()), aRequest.id);
  }

  GUID requestData(std::string const& aXPath, ContextInformation const* aContext,
                   IBaseDataCallback* aCallback) override {
    GUID const id = makeId ? makeId(aXPath, aContext, aCallback) : GUID::createGUID();
    requests.push_back({aXPath, aContext, aCallback, id});
    if (reaction) {
      reaction(requests.back());
    }
    return id;
  }

  GUID setData(std::string const&, std::string const&, IBaseDataCallback*, bool) override {
    return GUID::nullGUID;
  }
  GUID addData(std::string const&, std::string const&, IBaseDataCallback*, bool) override {
    return GUID::nullGUID;
  }
  GUID subscribeData(std::string const&, ContextInformation const*, IBaseDataCallback*) override {
    return GUID::nullGUID;
  }
  void unsubscribeData(GUID) override {}
  void registerDataProvider(std::string const&, IDataProvider*) override {}
  void unregisterDataProvider(std::string const&) override {}
  void unsubscribeForAllData(std::string const&) override {}
  void updateSubscriberStatus(GUID, std::string const&) override {}
  void notifyDataSubscribers(std::string const&, std::string const&, GUID const&) override {}
  void notifyDataSubscriber(GUID const&, std::string const&) override {}

 private:
  static inline FakeCoreData* sCurrent = nullptr;
};

}  // namespace Zelv::Controller::Testing
