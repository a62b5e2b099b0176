#pragma once

#include <string>

#include "zelv/interfaces/IBaseData.h"
#include "zelv/interfaces/IDataProvider.h"

namespace Zelv {

/// The tree, as components see it: with its providers, and with the reporting of changes.
class ZELV_EXPORT ICoreData : public virtual IBaseData {
 public:
  ~ICoreData() override;

  /// Gives a branch to a provider. Paths belong to the shortest registered branch that they begin
  /// with as plain text, with no regard for steps.
  ///
  /// Registering "/Zelv/Devices" also reads this device's identity from the provider, at once and
  /// on the calling thread.
  ///
  /// @param aProvider  not owned; MUST live until it is unregistered and the data worker is past
  /// it.
  /// @throws std::logic_error "Cannot register data provider for remote XPath." or, when the branch
  ///         has a provider, "Duplicate subscription for XPath."; std::invalid_argument when the
  ///         identity read is none.
  virtual void registerDataProvider(std::string const& aXPath, IDataProvider* aProvider) = 0;

  /// Takes a branch back. An unknown one is only logged.
  virtual void unregisterDataProvider(std::string const& aXPath) = 0;

  /// Does nothing but log.
  virtual void unsubscribeForAllData(std::string const& aDeviceID) = 0;

  /// Does nothing but log.
  virtual void updateSubscriberStatus(GUID aSubscriptionID, std::string const& aStatus) = 0;

  /// Reports a change. Subscribers of exactly this path are told at once, on this thread and under
  /// the lock of the subscriptions; subscribers above and below are told later, on the data
  /// worker, with the value that their own path then has.
  ///
  /// @param aXPath          what changed; must begin with "/Zelv", else the report is logged and
  ///                        dropped.
  /// @param aTransactionID  the transaction that made the change; see IDataProvider.
  virtual void notifyDataSubscribers(std::string const& aXPath, std::string const& aValue,
                                     GUID const& aTransactionID) = 0;

  /// Delivers a value to one subscription, at once and on this thread. An unknown id is only
  /// logged.
  virtual void notifyDataSubscriber(GUID const& aSubscriptionID, std::string const& aValue) = 0;
};

GUID const IID_ICoreData("045d52de-8e56-48d7-9ca5-e65bb75fa1da");

}  // namespace Zelv
