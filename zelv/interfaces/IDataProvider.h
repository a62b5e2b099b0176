#pragma once

#include <string>

#include "zelv/interfaces/IBase.h"

namespace Zelv {

/// Owns one branch of the tree and answers for it.
///
/// A provider registers itself with ICoreData::registerDataProvider() in one of its lifetime
/// commands and unregisters in a later one. It is never owned by the data layer.
///
/// All operations are called on the data worker, one at a time; the one exception is the read of
/// the device's own identity, which comes on the registering thread. Each returns 0 on success, but
/// the result is not looked at: a provider reports failure by throwing something derived from
/// std::exception, which reaches the requester as onStatus(). A non-zero result alone fails
/// silently.
///
/// After a change the provider itself MUST call ICoreData::notifyDataSubscribers(), with the
/// transaction id that it received; nothing else notifies. For a change of its own making it
/// chooses an id: with GUID::nullGUID the change stays on this device, as long as no withheld
/// transaction runs; with any other it reaches subscribers on other devices too.
class ZELV_EXPORT IDataProvider : public virtual IBase {
 public:
  /// Reads. @param aXPath in the form without a device. @param aData receives the value; several
  /// nodes are joined by the six characters "&#x13;".
  virtual int getData(std::string const& aXPath, std::string& aData, GUID aTransactionID) = 0;

  /// Replaces a value. @param aXPath as the caller wrote it.
  virtual int setData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) = 0;

  /// Adds a value. @param aXPath as the caller wrote it.
  virtual int addData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) = 0;

  /// Somebody subscribes. The data layer does not call it.
  virtual int onSubscribe(std::string const& aXPath, GUID aSubscriptionID) = 0;

  /// Somebody unsubscribes. The data layer does not call it.
  virtual int onUnsubscribe(std::string const& aXPath, GUID aSubscriptionID) = 0;

  ~IDataProvider() override;
};

GUID const IID_IDataProvider("a1897a99-3255-4ad5-852f-b2cedce72768");

}  // namespace Zelv
