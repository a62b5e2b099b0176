#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "zelv/controller/testing/FakeCoreData.h"
#include "zelv/core/AssetProvider.h"
#include "zelv/core/testing/RecordedParts.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/OwnNetwork.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv::Testing {

/// A tree that notes what the provider does to it. The address of the set never comes, so that the
/// port of assets stays closed.
class AssetTree : public Controller::Testing::FakeCoreData {
 public:
  void registerDataProvider(std::string const& aXPath, IDataProvider* aProvider) override {
    calls.push_back("register " + aXPath);
    provider = aProvider;
  }
  void unregisterDataProvider(std::string const& aXPath) override {
    calls.push_back("unregister " + aXPath);
  }
  GUID subscribeData(std::string const& aXPath, ContextInformation const*,
                     IBaseDataCallback*) override {
    calls.push_back("subscribe " + aXPath);
    return GUID::createGUID();
  }
  void notifyDataSubscribers(std::string const& aXPath, std::string const& aValue,
                             GUID const& aId) override {
    calls.push_back("notify " + aXPath + " = " + aValue + " " + aId.toString());
  }

  static IBase* findFor(GUID aInterfaceID) {
    return aInterfaceID == IID_ICoreData ? find() : nullptr;
  }

  std::vector<std::string> calls;
  IDataProvider* provider = nullptr;
};

/// A provider on a main store of the test's making.
class AssetProviderTest : public ::testing::Test {
 protected:
  static constexpr char const* cRoot = "/Zelv/Storage/Assets";

  AssetProviderTest() { directories.putReadOnly("Assets.xml", "<Assets><Factory/></Assets>"); }

  /// With these assets, not initialised.
  void make(std::string const& aAssets) {
    directories.putWritable("Assets.xml", "<Assets>" + aAssets + "</Assets>");
    provider = std::make_unique<Core::AssetProvider>(AssetTree::findFor);
  }

  /// As it runs, with its start forgotten.
  void run(std::string const& aAssets = "") {
    make(aAssets);
    command(LIFETIME_INITIALISE);
    command(LIFETIME_START);
    tree.calls.clear();
    log.clear();
  }

  void command(eLifetimeCommand aCommand) { provider->onLifetime(aCommand, GUID::createGUID()); }

  /// @param aPath  below the branch.
  std::string read(std::string const& aPath) {
    std::string data = "as it was";
    EXPECT_EQ(provider->getData(cRoot + aPath, data, GUID::nullGUID), 0);
    return data;
  }

  int write(std::string const& aPath, std::string const& aData) {
    return provider->setData(cRoot + aPath, aData, transaction);
  }

  /// A package with these assets.
  static std::string packageText(std::string const& aName, std::string const& aAssets,
                                 std::string const& aPath = "") {
    return "<AssetPackage ID='id of " + aName + "' name='" + aName + "' path='" + aPath + "'>" +
           aAssets + "</AssetPackage>";
  }

  int load(std::string const& aName, std::string const& aAssets, std::string const& aPath = "") {
    return write("/AssetPackage[@name='" + aName + "']", packageText(aName, aAssets, aPath));
  }

  int ask(std::string const& aRequest) { return provider->handleAssetRequest(aRequest, parts); }

  Platform::Fake::OwnNetwork network;
  Platform::Fake::TemporaryDirectories directories;
  Platform::Fake::LogCapture log;
  AssetTree tree;
  RecordedParts parts;
  GUID const transaction = GUID::createGUID();
  std::unique_ptr<Core::AssetProvider> provider;
};

}  // namespace Zelv::Testing
