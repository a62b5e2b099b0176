#pragma once

#include <exception>
#include <map>
#include <string>

#include "zelv/controller/DataTaskHandler.h"
#include "zelv/controller/LongestCall.h"
#include "zelv/interfaces/IDataProvider.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv::Controller {

/// The registry of the providers of this device's branches, and the data tasks on them.
///
/// The operations on the registry may be called from any thread, execute...() from the data worker.
/// The lock is held for single steps only, never while a provider or callback runs.
class LocalDataController final : public virtual DataTaskHandler {
 public:
  LocalDataController();

  /// Answers the callback with the value, or with onStatus(). A path under no provider is reported
  /// twice, which requesters have come to know. Exceptions of the callback leave here.
  /// @param aOneTime  not used on this side.
  void executeGetData(GUID const& aTransactionID, std::string const& aXPath,
                      ContextInformation const* aContext, IBaseDataCallback* aCallback,
                      bool aOneTime) override;

  /// The path goes to the provider as it is: the form that names this very device finds none,
  /// unlike in a read.
  void executeSetData(GUID const& aTransactionID, std::string const& aXPath,
                      std::string const& aValue, bool aAdd, IBaseDataCallback* aCallback,
                      bool aNotifyRemoteSubscribers) override;

  void initialize();
  void terminate();

  /// @param aProvider  not owned; null is accepted and answers for nothing.
  /// @throws std::logic_error "Duplicate subscription for XPath." when the branch is taken.
  void registerDataProvider(std::string const& aXPath, IDataProvider* aProvider);

  void unregisterDataProvider(std::string const& aXPath);

  /// The set whose changes must not reach other devices, while its provider runs; the null id
  /// otherwise.
  GUID getCurrentSetDataTransactionId() const;

  /// The add whose provider runs; the null id otherwise.
  GUID getCurrentAddDataTransactionId() const;

  /// Tells the callback of the running set or add, if there is one.
  void updateSubscriberStatus(GUID aTransactionID, std::string const& aStatus);

  /// The provider of the first branch, in ascending order, that the path begins with as plain text:
  /// a shorter branch wins over a longer one, and "/Zelv/Devices" also gets "/Zelv/DevicesOld".
  /// @return null when there is none; aCallback, unless null, has then heard of it.
  IDataProvider* findDataProvider(std::string const& aXPath, IBaseDataCallback* aCallback,
                                  GUID const& aTransactionID) const;

  /// Reads from a provider and tells the callback, with the path as it was given.
  void getData(std::string const& aXPath, ContextInformation const* aContext,
               GUID const& aTransactionID, IDataProvider* aProvider,
               IBaseDataCallback* aCallback) const;

  LongestCall const& getLongestProvider() const { return mLongestProvider; }
  LongestCall const& getLongestCallback() const { return mLongestCallback; }

 private:
  class CurrentCallback;
  class CurrentSet;
  class CurrentAdd;

  void reportFailure(IBaseDataCallback* aCallback, std::exception const& aException,
                     GUID const& aTransactionID, std::string const& aXPath) const;
  void runSet(IDataProvider* aProvider, GUID const& aTransactionID, std::string const& aXPath,
              std::string const& aValue, IBaseDataCallback* aCallback);
  void runAdd(IDataProvider* aProvider, GUID const& aTransactionID, std::string const& aXPath,
              std::string const& aValue, IBaseDataCallback* aCallback);
  void setCurrentSetDataTransactionId(GUID const& aTransactionID);
  void setCurrentAddDataTransactionId(GUID const& aTransactionID);

  std::map<std::string, IDataProvider*> mProviders ZELV_GUARDED_BY(mMutex);
  /// Null outside a set or add.
  IBaseDataCallback* mCurrentCallback ZELV_GUARDED_BY(mMutex) = nullptr;
  GUID mCurrentSetDataTransactionId ZELV_GUARDED_BY(mMutex);
  GUID mCurrentAddDataTransactionId ZELV_GUARDED_BY(mMutex);
  mutable PCMutex mMutex;
  mutable LongestCall mLongestProvider;
  mutable LongestCall mLongestCallback;
};

}  // namespace Zelv::Controller
