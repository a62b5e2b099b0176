#pragma once

#include <memory>
#include <string>

#include "zelv/core/Core.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreLifetimeCallback.h"
#include "zelv/interfaces/IDataProvider.h"

namespace Zelv {

/// Serves one branch of the tree from one XML file, and writes every change back to it.
///
/// Registers the branch at command 0 and takes it back at command 3. Reads and writes are answered
/// whenever they come, whatever the lifetime state.
class Core::GenericDataProvider : public IDataProvider, public virtual ICoreLifetimeCallback {
 public:
  /// @param aBaseXPath     the branch.
  /// @param aDataFileName  full path of the file; its root element is the branch's last step.
  /// @param aPersist       false keeps changes in memory alone.
  GenericDataProvider(std::string aBaseXPath, std::string aDataFileName, bool aPersist);

  /// @throws std::runtime_error when the document does not hold the path.
  int getData(std::string const& aXPath, std::string& aData, GUID aTransactionID) override;

  /// Changes the document, saves it and tells the subscribers. @return what the document said.
  /// @throws std::runtime_error "File save failed!"; the change then stands in memory, the file
  ///         keeps its old content, and nobody is told.
  int setData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override;

  /// Accepted, and does nothing.
  int addData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override;
  int onSubscribe(std::string const& aXPath, GUID aSubscriptionID) override;
  int onUnsubscribe(std::string const& aXPath, GUID aSubscriptionID) override;
  ~GenericDataProvider() override;
  void onLifetime(eLifetimeCommand aCommand, GUID aTransactionID) override;
  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;

 private:
  std::string databasePath(std::string const& aXPath) const;
  void save();
  void initialize();
  void terminate();

  std::string const mBaseXPath;
  std::string const mDataFileName;
  int mState = 0;
  std::unique_ptr<Infrastructure::HierarchicalDB> mDatabase;
  bool const mPersist;
  /// Not owned; null until command 0.
  ICoreData* mCoreData = nullptr;
};

}  // namespace Zelv
