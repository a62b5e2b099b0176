#pragma once

#include <memory>
#include <string>

#include "zelv/core/Core.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreLifetimeCallback.h"
#include "zelv/interfaces/IDataProvider.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv {

/// The provider of "/Zelv/Users": the accounts of this device, from "Users.xml".
///
/// It knows of an account only its attribute "ID", which it makes up, and the element "LoggedInTv",
/// which it empties at each start. The rest belongs to the applications.
///
/// The document locks each operation; apart from that callers come one at a time, on the data
/// worker.
class Core::MultiAccount : public IDataProvider, public virtual ICoreLifetimeCallback {
 public:
  /// Where the tree is found; gives null when there is none.
  using FindInterface = IBase* (*)(GUID aInterfaceID);

  /// Loads the file, repairing it where need be, and empties the logins. Throws nothing: without a
  /// file that can be used, all reads throw and all writes fail.
  MultiAccount();

  explicit MultiAccount(FindInterface aFindInterface);

  /// Reads a path below "/Zelv/Users". @throws std::runtime_error when there is no such data.
  int getData(std::string const& aXPath, std::string& aData, GUID aTransactionID) override;

  /// Writes a path below "/Zelv/Users", saves, and tells the subscribers. -1 when there is no such
  /// element.
  /// @throws std::runtime_error "Fil save failed!"; the value then stands in memory alone, and
  ///         nobody hears of it.
  int setData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override;

  /// Adds a user with a new ID, saves, and tells the subscribers. Does nothing, with success, for a
  /// path that does not begin with "/Zelv/Users/User", and for data that does not begin with
  /// "<User".
  ///
  /// @param aData  the user as XML, without an attribute "ID": with one, the attributes from it on
  ///               and all content are lost.
  /// @throws std::runtime_error "File save failed!"; the user then stands in memory alone, and
  ///         nobody hears of it.
  int addData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override;
  int onSubscribe(std::string const& aXPath, GUID aSubscriptionID) override;
  int onUnsubscribe(std::string const& aXPath, GUID aSubscriptionID) override;
  ~MultiAccount() override;
  void onLifetime(eLifetimeCommand aCommand, GUID aTransactionID) override;
  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;

  /// The ID of the user that was last to be added, whether or not that succeeded; empty at first.
  void getLastGenId(std::string& aId);

  /// Empties, in memory, the login of every user. Ends at the first user without the element
  /// "LoggedInTv". @return 0 if all logins are empty.
  int clearLoginTV();

  void initialize();

  /// Takes the branch back.
  void terminate();

  /// 0 constructed, 1 initialised, 2 running, 3 terminated.
  int getLifetimeState() const { return mLifetimeState; }

 private:
  int clearLoginOf(std::string const& aId);
  bool save();

  ICoreData* mCoreData = nullptr;
  int mLifetimeState = 0;
  std::unique_ptr<Infrastructure::HierarchicalDB> mUsers;
  PCMutex mLock;
  std::string mLastGenId ZELV_GUARDED_BY(mLock);
  FindInterface const mFindInterface;
};

}  // namespace Zelv
