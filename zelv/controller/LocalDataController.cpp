#include "zelv/controller/LocalDataController.h"

#include <cstdint>
#include <stdexcept>
#include <typeinfo>

#include "zelv/controller/DataController.h"
#include "zelv/controller/TimedCall.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

/// Shows the callback of the running set or add to updateSubscriberStatus().
class LocalDataController::CurrentCallback {
 public:
  CurrentCallback(LocalDataController& aController, IBaseDataCallback* aCallback)
      : mController(aController) {
    set(aCallback);
  }
  CurrentCallback(CurrentCallback const&) = delete;
  CurrentCallback& operator=(CurrentCallback const&) = delete;
  ~CurrentCallback() { set(nullptr); }

 private:
  void set(IBaseDataCallback* aCallback) {
    TCAutoLock lock(mController.mMutex);
    mController.mCurrentCallback = aCallback;
  }

  LocalDataController& mController;
};

/// Ends the withholding of a set's changes, whichever way its provider ends.
class LocalDataController::CurrentSet {
 public:
  explicit CurrentSet(LocalDataController& aController) : mController(aController) {}
  CurrentSet(CurrentSet const&) = delete;
  CurrentSet& operator=(CurrentSet const&) = delete;
  ~CurrentSet() { mController.setCurrentSetDataTransactionId(GUID::nullGUID); }

 private:
  LocalDataController& mController;
};

class LocalDataController::CurrentAdd {
 public:
  CurrentAdd(LocalDataController& aController, GUID const& aTransactionID)
      : mController(aController) {
    mController.setCurrentAddDataTransactionId(aTransactionID);
  }
  CurrentAdd(CurrentAdd const&) = delete;
  CurrentAdd& operator=(CurrentAdd const&) = delete;
  ~CurrentAdd() { mController.setCurrentAddDataTransactionId(GUID::nullGUID); }

 private:
  LocalDataController& mController;
};

/// The status carries no text: it is made from an exception, of which only the base is kept.
void LocalDataController::reportFailure(IBaseDataCallback* aCallback,
                                        std::exception const& aException,
                                        GUID const& aTransactionID,
                                        std::string const& aXPath) const {
  if (aCallback == nullptr) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "LocalDataController::reportFailure: no callback to report to.");
    return;
  }
  TimedCall const call(mLongestCallback, "onStatus", typeid(*aCallback), aXPath);
  aCallback->onStatus(StatusInformation(aException), aTransactionID);
}

LocalDataController::LocalDataController()
    : mCurrentSetDataTransactionId(GUID::nullGUID), mCurrentAddDataTransactionId(GUID::nullGUID) {}

void LocalDataController::initialize() {}

void LocalDataController::terminate() {}

void LocalDataController::registerDataProvider(std::string const& aXPath,
                                               IDataProvider* aProvider) {
  TraceScope trace("LocalDataController::registerDataProvider");
  TCAutoLock lock(mMutex);
  if (!mProviders.try_emplace(aXPath, aProvider).second) {
    throw std::logic_error("Duplicate subscription for XPath.");
  }
}

void LocalDataController::unregisterDataProvider(std::string const& aXPath) {
  TraceScope trace("LocalDataController::unregisterDataProvider");
  TCAutoLock lock(mMutex);
  if (mProviders.erase(aXPath) == 0) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "LocalDataController::unregisterDataProvider: No data provider registered "
                       "for XPath %s.",
                       aXPath.c_str());
  }
}

GUID LocalDataController::getCurrentSetDataTransactionId() const {
  TCAutoLock lock(mMutex);
  return mCurrentSetDataTransactionId;
}

GUID LocalDataController::getCurrentAddDataTransactionId() const {
  TCAutoLock lock(mMutex);
  return mCurrentAddDataTransactionId;
}

void LocalDataController::setCurrentSetDataTransactionId(GUID const& aTransactionID) {
  TCAutoLock lock(mMutex);
  mCurrentSetDataTransactionId = aTransactionID;
}

void LocalDataController::setCurrentAddDataTransactionId(GUID const& aTransactionID) {
  TCAutoLock lock(mMutex);
  mCurrentAddDataTransactionId = aTransactionID;
}

void LocalDataController::updateSubscriberStatus(GUID aTransactionID, std::string const& aStatus) {
  TraceScope trace("LocalDataController::updateSubscriberStatus");
  IBaseDataCallback* callback = nullptr;
  {
    TCAutoLock lock(mMutex);
    callback = mCurrentCallback;
  }
  if (callback != nullptr) {
    callback->onStatus(StatusInformation(aStatus), aTransactionID);
  }
}

IDataProvider* LocalDataController::findDataProvider(std::string const& aXPath,
                                                     IBaseDataCallback* aCallback,
                                                     GUID const& aTransactionID) const {
  TraceScope trace("LocalDataController::findDataProvider");
  IDataProvider* found = nullptr;
  {
    TCAutoLock lock(mMutex);
    for (auto const& [branch, provider] : mProviders) {
      if (aXPath.starts_with(branch)) {
        found = provider;
        break;
      }
    }
  }
  if (found == nullptr && aCallback != nullptr) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "LocalDataController::findDataProvider: DataProvider not found for '%s'!",
                       aXPath.c_str());
    reportFailure(aCallback, std::exception(), aTransactionID, aXPath);
  }
  return found;
}

void LocalDataController::executeGetData(GUID const& aTransactionID, std::string const& aXPath,
                                         ContextInformation const* aContext,
                                         IBaseDataCallback* aCallback, bool) {
  TraceScope trace("LocalDataController::executeGetData");
  std::string const localXPath = DataController::convertToLocalXPath(aXPath);
  if (IDataProvider* const provider = findDataProvider(localXPath, aCallback, aTransactionID)) {
    getData(aXPath, aContext, aTransactionID, provider, aCallback);
    return;
  }
  reportFailure(aCallback, std::runtime_error("Data Provider Not Found"), aTransactionID, aXPath);
  PCRealDebug::Print(PCRealDebug::Warning,
                     "LocalDataController::executeGetData: Data provider not found for XPath '%s'.",
                     aXPath.c_str());
}

void LocalDataController::getData(std::string const& aXPath, ContextInformation const* aContext,
                                  GUID const& aTransactionID, IDataProvider* aProvider,
                                  IBaseDataCallback* aCallback) const {
  TraceScope trace("LocalDataController::getData");
  std::string const localXPath = DataController::convertToLocalXPath(aXPath);
  std::string data;
  std::int64_t answered = 0;
  try {
    TimedCall call(mLongestProvider, "getData", typeid(*aProvider), localXPath);
    aProvider->getData(localXPath, data, aTransactionID);
    answered = call.end();
  } catch (std::exception const& exception) {
    PCRealDebug::Print(PCRealDebug::Error, "LocalDataController::getData: Exception: %s",
                       exception.what());
    reportFailure(aCallback, exception, aTransactionID, aXPath);
    return;
  } catch (...) {
    // The worker says what came out; the reader learns that nothing will come.
    reportFailure(aCallback, std::exception(), aTransactionID, aXPath);
    throw;
  }
  if (aCallback == nullptr) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "LocalDataController::getData: no callback for XPath '%s'.", aXPath.c_str());
    return;
  }
  TimedCall const call(mLongestCallback, "onData", typeid(*aCallback), aXPath, answered);
  aCallback->onData(aXPath, data, aContext, aTransactionID);
}

void LocalDataController::executeSetData(GUID const& aTransactionID, std::string const& aXPath,
                                         std::string const& aValue, bool aAdd,
                                         IBaseDataCallback* aCallback,
                                         bool aNotifyRemoteSubscribers) {
  TraceScope trace("LocalDataController::executeSetData");
  IDataProvider* const provider = findDataProvider(aXPath, aCallback, aTransactionID);
  if (provider == nullptr) {
    return;
  }
  CurrentCallback current(*this, aCallback);
  if (aNotifyRemoteSubscribers) {
    setCurrentSetDataTransactionId(GUID::nullGUID);
  } else {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "LocalDataController::executeSetData: changes for this transaction must not "
                       "propagate remotely!");
    setCurrentSetDataTransactionId(aTransactionID);
  }
  if (aAdd) {
    runAdd(provider, aTransactionID, aXPath, aValue, aCallback);
  } else {
    runSet(provider, aTransactionID, aXPath, aValue, aCallback);
  }
}

void LocalDataController::runSet(IDataProvider* aProvider, GUID const& aTransactionID,
                                 std::string const& aXPath, std::string const& aValue,
                                 IBaseDataCallback* aCallback) {
  try {
    CurrentSet current(*this);
    TimedCall const call(mLongestProvider, "setData", typeid(*aProvider), aXPath);
    aProvider->setData(aXPath, aValue, aTransactionID);
  } catch (std::exception const& exception) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "LocalDataController::executeSetData: Exception in IDataProvider::setData: %s",
        exception.what());
    reportFailure(aCallback, exception, aTransactionID, aXPath);
  } catch (...) {
    reportFailure(aCallback, std::exception(), aTransactionID, aXPath);
    throw;
  }
}

/// A withheld add stays the current set until the next set or add. Ids are never used twice, so no
/// other transaction is taken for it; but changes that carry the null id reach other devices
/// meanwhile, as they do during a withheld set.
void LocalDataController::runAdd(IDataProvider* aProvider, GUID const& aTransactionID,
                                 std::string const& aXPath, std::string const& aValue,
                                 IBaseDataCallback* aCallback) {
  try {
    CurrentAdd current(*this, aTransactionID);
    TimedCall const call(mLongestProvider, "addData", typeid(*aProvider), aXPath);
    aProvider->addData(aXPath, aValue, aTransactionID);
  } catch (std::exception const& exception) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "LocalDataController::executeSetData: Exception in IDataProvider::addData: %s",
        exception.what());
    reportFailure(aCallback, exception, aTransactionID, aXPath);
  } catch (...) {
    reportFailure(aCallback, std::exception(), aTransactionID, aXPath);
    throw;
  }
}

}  // namespace Zelv::Controller
