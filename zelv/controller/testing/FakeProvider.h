#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "zelv/interfaces/IDataProvider.h"

namespace Zelv::Controller::Testing {

/// Answers every read with "value of PATH", accepts every write, and notes the calls; unless the
/// test wants something else done.
class FakeProvider : public virtual IDataProvider {
 public:
  using Get = std::function<int(std::string const& aXPath, std::string& aData, GUID const& aId)>;
  using Set =
      std::function<int(std::string const& aXPath, std::string const& aData, GUID const& aId)>;

  /// MUST NOT be changed while calls can come.
  Get get;
  Set set;
  Set add;

  int getData(std::string const& aXPath, std::string& aData, GUID aTransactionID) override {
    note("get " + aXPath);
    if (get) {
      return get(aXPath, aData, aTransactionID);
    }
    aData = "value of " + aXPath;
    return 0;
  }

  int setData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override {
    note("set " + aXPath + " = " + aData);
    return set ? set(aXPath, aData, aTransactionID) : 0;
  }

  int addData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override {
    note("add " + aXPath + " = " + aData);
    return add ? add(aXPath, aData, aTransactionID) : 0;
  }

  int onSubscribe(std::string const&, GUID) override {
    note("onSubscribe");
    return 0;
  }

  int onUnsubscribe(std::string const&, GUID) override {
    note("onUnsubscribe");
    return 0;
  }

  std::vector<std::string> calls() const {
    std::lock_guard lock(mLock);
    return mCalls;
  }

 private:
  void note(std::string const& aCall) {
    std::lock_guard lock(mLock);
    mCalls.push_back(aCall);
  }

  mutable std::mutex mLock;
  std::vector<std::string> mCalls;
};

}  // namespace Zelv::Controller::Testing
