#pragma once

#include <memory>
#include <string>

#include "zelv/core/Core.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreLifetimeCallback.h"
#include "zelv/interfaces/IDataProvider.h"

namespace Zelv {

/// The provider of "/Zelv/Devices": the lasting description of this device, from "Devices.xml", and
/// the lists of remote devices, from discovery.
///
/// Has no lock of its own: documents lock each operation, and discovery locks its list.
class Core::MultiDevice : public IDataProvider, public virtual ICoreLifetimeCallback {
 public:
  /// Loads both files, repairing them where need be, and chooses the discovery. Throws
  /// std::runtime_error when a file can be had from nowhere, or there is no memory.
  MultiDevice();

  /// Reads a path below "/Zelv/Devices". Throws std::runtime_error when there is no such data.
  int getData(std::string const& aXPath, std::string& aData, GUID aTransactionID) override;

  /// Writes a path below "/Zelv/Devices" and saves; subscribers hear of it when it is on the
  /// storage. Throws std::runtime_error when it cannot be saved; the value then stands in memory
  /// alone, and nobody hears of it. -1 when there is no such element.
  int setData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override;

  /// Nothing can be added to this branch; always 0.
  int addData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override;
  int onSubscribe(std::string const& aXPath, GUID aSubscriptionID) override;
  int onUnsubscribe(std::string const& aXPath, GUID aSubscriptionID) override;
  ~MultiDevice() override;
  void onLifetime(eLifetimeCommand aCommand, GUID aTransactionID) override;
  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;

  /// The devices document; owned here.
  Infrastructure::HierarchicalDB* getDeviceData() const { return mDeviceData.get(); }

  /// Null when this set has none. For diagnostics.
  DiscoveryService* getDiscovery() const { return mDiscoveryService.get(); }

  /// The set's product code; empty when it has none.
  void getModelName(std::string& aData);

  /// Refreshes model and addresses in the file. What cannot be saved is logged, and stands in
  /// memory.
  void updateDeviceInfo();
  void updateNetworkInterfaces();

  /// Refreshes the file, gives the set its identity if it has none, and starts discovery.
  void initialize();

  /// Ends discovery and takes the branch back.
  void terminate();

  /// 0 constructed, 1 initialised, 2 running, 3 terminated.
  int getLifetimeState() const { return mLifetimeState; }

 private:
  void loadDocuments();
  void chooseDiscovery();
  std::string readDiscovered(std::string const& aXPath, GUID const& aTransactionID);
  void readDocument(std::string const& aXPath, std::string& aData);
  int writeAlerts(std::string const& aXPath, std::string const& aData);
  void save();
  void writeAtStart(std::string const& aXPath, std::string const& aData);
  void ensureIdentity();
  void ensureModel();
  std::string readAtStart(std::string const& aXPath);

  std::unique_ptr<Infrastructure::HierarchicalDB> mConfiguration;
  ICoreData* mCoreData = nullptr;
  std::unique_ptr<Infrastructure::HierarchicalDB> mDeviceData;
  std::unique_ptr<DiscoveryService> mDiscoveryService;
  int mLifetimeState = 0;
  std::string mSystemAlerts;
};

}  // namespace Zelv
