#include "zelv/core/MultiDevice.h"

#include <initializer_list>
#include <list>
#include <new>
#include <stdexcept>
#include <vector>

#include "zelv/adapter/NetworkInterface.h"
#include "zelv/core/DevicesFile.h"
#include "zelv/core/DiscoveryService.h"
#include "zelv/core/MultiDeviceSources.h"
#include "zelv/infrastructure/ZelvFileUtil.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCTv.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv {

using Infrastructure::HierarchicalDB;
using Infrastructure::ZelvFileUtil;
using Platform::Directories;

namespace {

char const* const branch = "/Zelv/Devices";
char const* const configurationFile = "Configuration.xml";
char const* const alertsPath = "Devices/LocalTV/SystemAlerts/text()";
char const* const idPath = "/Zelv/Devices/LocalTV/@ID";
char const* const modelPath = "/Zelv/Devices/LocalTV/Model/text()";

bool beginsWithAny(std::string const& aXPath, std::initializer_list<char const*> aPrefixes) {
  for (char const* prefix : aPrefixes) {
    if (aXPath.starts_with(prefix)) {
      return true;
    }
  }
  return false;
}

/// The path in the document, whose root element is the last step of the branch.
std::string documentPath(std::string const& aXPath) {
  return aXPath.starts_with(branch) ? aXPath.substr(6) : aXPath;
}

void logNoSetControl() {
  PCRealDebug::Print(
      PCRealDebug::Warning,
      "MultiDevice::getData: delegating to TVControl.TOLMAR: TVControl is removed for "
      "Quorl, do nothing");
}

/// A lack of memory is told in words of its own, which the log of a failed start shows.
template <typename Made, typename... Arguments>
std::unique_ptr<Made> allocate(char const* aFailure, Arguments... aArguments) {
  std::unique_ptr<Made> made(new (std::nothrow) Made(aArguments...));
  if (!made) {
    throw std::runtime_error(aFailure);
  }
  return made;
}

/// Throws aNoFile when the file is neither good nor can be restored.
std::unique_ptr<HierarchicalDB> load(char const* aFile, char const* aNoFile,
                                     char const* aNoMemory) {
  std::string const& directory = Directories::Writable();
  if (ZelvFileUtil::checkIsFileAvailable(aFile, directory, /*aValidate=*/true) != 0) {
    throw std::runtime_error(aNoFile);
  }
  auto document = allocate<HierarchicalDB>(aNoMemory);
  document->loadFromFile(directory + aFile);
  return document;
}

bool isOn(HierarchicalDB& aConfiguration, char const* aPath) {
  std::string value;
  aConfiguration.getContent(aPath, value);
  return value == "true";
}

}  // namespace

Core::MultiDevice::MultiDevice() {
  TraceScope trace("MultiDevice::MultiDevice");
  loadDocuments();
  chooseDiscovery();
}

void Core::MultiDevice::loadDocuments() {
  mDeviceData =
      load(DevicesFile::Name,
           "in MultiDevice::MultiDevice: Failed to load Devices file and could not restore!",
           "in MultiDevice::MultiDevice: Failed allocate HierarchicalDB for Devices DB!");
  DevicesFile::repairIfIncomplete(*mDeviceData);
  mConfiguration =
      load(configurationFile,
           "in MultiDevice::MultiDevice: Failed to load Configuration file and could not restore!",
           "in MultiDevice::MultiDevice: Failed allocate HierarchicalDB for Configuration DB!");
}

void Core::MultiDevice::chooseDiscovery() {
  if (isOn(*mConfiguration, "/Configuration/UPnPDiscovery/text()")) {
    PCRealDebug::Print(PCRealDebug::Notable, "MultiDevice::MultiDevice: Using UPnP Discovery!");
    // The first line tells what the file asks for; nobody shall take it for what happens.
    PCRealDebug::Print(
        PCRealDebug::Warning,
        "MultiDevice::MultiDevice: This library is built without UPnP Discovery, going on.");
  }
  if (isOn(*mConfiguration, "/Configuration/ZelvDiscovery/text()")) {
    PCRealDebug::Print(PCRealDebug::Notable, "MultiDevice::MultiDevice: Using Zelv Discovery!");
    mDiscoveryService = allocate<DiscoveryService>(
        "in MultiDevice::MultiDevice: Failed allocate DiscoveryService!", this);
  }
}

Core::MultiDevice::~MultiDevice() {
  TraceScope trace("MultiDevice::~MultiDevice");
  mDiscoveryService.reset();
  mConfiguration.reset();
  mDeviceData.reset();
}

int Core::MultiDevice::getData(std::string const& aXPath, std::string& aData, GUID aTransactionID) {
  TraceScope trace("MultiDevice::getData");
  if (beginsWithAny(aXPath,
                    {"/Zelv/Devices/RemoteTV", "/Zelv/Devices/Mobile", "/Zelv/Devices/Unknown"})) {
    aData = readDiscovered(aXPath, aTransactionID);
    return 0;
  }
  // Dead ends with success: applications still read them from the time when there was a set control
  // service behind them, and take no data for an answer.
  if (beginsWithAny(aXPath, {"/Zelv/Devices/LocalTV/Display", "/Zelv/Devices/LocalTV/Tuners",
                             "/Zelv/Devices/LocalTV/Sources", "/Zelv/Devices/LocalTV/Speakers"})) {
    logNoSetControl();
    return 0;
  }
  readDocument(aXPath, aData);
  return 0;
}

std::string Core::MultiDevice::readDiscovered(std::string const& aXPath,
                                              GUID const& aTransactionID) {
  PCRealDebug::Print(PCRealDebug::Detail, "MultiDevice::getData: delegating to DiscoveryService.");
  std::list<IDataProvider*> sources;
  if (mDiscoveryService) {
    sources.push_back(mDiscoveryService.get());
  }
  return MultiDeviceSources::read(sources, aXPath, aTransactionID);
}

void Core::MultiDevice::readDocument(std::string const& aXPath, std::string& aData) {
  if (!mDeviceData) {
    throw std::runtime_error("in MultiDevice::getData: hdb object not availiable.");
  }
  std::string const path = documentPath(aXPath);
  if (path == alertsPath) {
    aData = mSystemAlerts;
    return;
  }
  if (mDeviceData->getContent(path, aData) != 0) {
    throw std::runtime_error("in MultiDevice::getData: data not found for '" + aXPath + "'.");
  }
}

int Core::MultiDevice::setData(std::string const& aXPath, std::string const& aData,
                               GUID aTransactionID) {
  TraceScope trace("MultiDevice::setData");
  // The path as given, unlike in getData: the alerts leaf is written by those alone who leave
  // "/Zelv/" away, and a write with it goes to the file, where nobody reads it.
  if (aXPath == alertsPath) {
    return writeAlerts(aXPath, aData);
  }
  if (beginsWithAny(aXPath, {"/Zelv/Devices/LocalTV/Display", "/Zelv/Devices/LocalTV/Speakers"})) {
    logNoSetControl();
    return 0;
  }
  if (mDeviceData && mDeviceData->setContent(documentPath(aXPath), aData, false) != 0) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "MultiDevice::setData: Failed to set data in HierarchicalDB.");
    return -1;
  }
  save();
  if (mCoreData) {
    mCoreData->notifyDataSubscribers(aXPath, aData, aTransactionID);
  }
  return 0;
}

int Core::MultiDevice::writeAlerts(std::string const& aXPath, std::string const& aData) {
  mSystemAlerts = aData;
  if (!mCoreData) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "MultiDevice::setData: Failed to get mCoreData interface.");
    return -1;
  }
  mCoreData->notifyDataSubscribers(aXPath, aData, GUID::nullGUID);
  return 0;
}

void Core::MultiDevice::save() {
  if (!mDeviceData || !DevicesFile::save(*mDeviceData)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiDevice::setData: File save failed, data not comitted.");
    throw std::runtime_error("Fil save failed!");
  }
}

int Core::MultiDevice::addData(std::string const&, std::string const&, GUID) {
  TraceScope trace("MultiDevice::addData");
  return 0;
}

int Core::MultiDevice::onSubscribe(std::string const&, GUID) {
  TraceScope trace("MultiDevice::onSubscribe");
  return 0;
}

int Core::MultiDevice::onUnsubscribe(std::string const&, GUID) {
  TraceScope trace("MultiDevice::onUnsubscribe");
  return 0;
}

void Core::MultiDevice::onStatus(StatusInformation const&, GUID const&) {
  TraceScope trace("MultiDevice::onStatus");
}

void Core::MultiDevice::onLifetime(eLifetimeCommand aCommand, GUID) {
  TraceScope trace("MultiDevice::onLifetime");
  switch (aCommand) {
    case LIFETIME_INITIALISE:
      mLifetimeState = mLifetimeState == 0 ? 1 : mLifetimeState;
      initialize();
      break;
    case LIFETIME_START:
      mLifetimeState = mLifetimeState == 1 ? 2 : mLifetimeState;
      if (mCoreData) {
        mCoreData->registerDataProvider(branch, this);
      }
      break;
    case LIFETIME_STOP:
      mLifetimeState = mLifetimeState == 2 ? 1 : mLifetimeState;
      break;
    case LIFETIME_TERMINATE:
      mLifetimeState = mLifetimeState == 1 || mLifetimeState == 2 ? 3 : mLifetimeState;
      terminate();
      break;
  }
}

void Core::MultiDevice::getModelName(std::string& aData) {
  aData.clear();
  char model[TCTv::ProductCodeSize] = {};
  if (!g_AppTV.GetProductCode(model, false)) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "MultiDevice::getModelName: Failed to get model name.");
    return;
  }
  PCRealDebug::Print(PCRealDebug::Detail, "MultiDevice::getModelName: Model=%s.", model);
  aData = model;
}

void Core::MultiDevice::updateDeviceInfo() {
  std::string model;
  getModelName(model);
  writeAtStart(modelPath, model);
}

// Every interface writes to the same element, so the last one in the kernel's list is the one that
// peers are told of.
void Core::MultiDevice::updateNetworkInterfaces() {
  std::string const stem = "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface[@ID='1']";
  std::vector<std::unique_ptr<Adapter::NetworkInterface>> interfaces;
  for (Adapter::NetworkInterface* snapshot : Adapter::NetworkInterface::getInterfaces()) {
    interfaces.emplace_back(snapshot);
  }
  for (auto const& snapshot : interfaces) {
    if (snapshot->getName() == "lo") {
      continue;
    }
    std::string const mac = snapshot->getMACAddress();
    PCRealDebug::Print(
        PCRealDebug::Notable,
        "MultiDevice::updateNetworkInterfaces: Network interface '%s' MAC address %s.",
        snapshot->getName().c_str(), mac.c_str());
    writeAtStart(stem + "/MACAddress/text()", mac);
    for (std::string const& address : snapshot->getIPv4Addresses()) {
      PCRealDebug::Print(
          PCRealDebug::Notable,
          "MultiDevice::updateNetworkInterfaces: Network interface '%s' IPv4 address %s.",
          snapshot->getName().c_str(), address.c_str());
      writeAtStart(stem + "/IPv4/Address/text()", address);
    }
  }
}

// A set whose storage is full or read-only starts all the same and lives on what it has in memory.
void Core::MultiDevice::writeAtStart(std::string const& aXPath, std::string const& aData) {
  try {
    setData(aXPath, aData, GUID::nullGUID);
  } catch (std::exception const& error) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiDevice::initialize: '%s' is not saved: %s Going on.", aXPath.c_str(),
                       error.what());
  }
}

std::string Core::MultiDevice::readAtStart(std::string const& aXPath) {
  std::string value;
  getData(aXPath, value, GUID::createGUID());
  return value;
}

void Core::MultiDevice::initialize() {
  TraceScope trace("MultiDevice::initialize");
  mCoreData = dynamic_cast<ICoreData*>(InterfaceFactory::getInterface(IID_ICoreData));
  if (!mCoreData) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiDevice::initialize: Failed to obtain ICoreData interface.");
    return;
  }
  updateNetworkInterfaces();
  updateDeviceInfo();
  ensureIdentity();
  ensureModel();
  if (mDiscoveryService) {
    mDiscoveryService->initialize();
  }
}

// An identity that is none could be told to nobody, and the tree could not register it: it counts
// as missing.
void Core::MultiDevice::ensureIdentity() {
  if (DevicesFile::isIdentity(readAtStart(idPath))) {
    return;
  }
  std::string const id = GUID::createGUID().toString();
  PCRealDebug::Print(PCRealDebug::Notable, "MultiDevice::initialize: Setting device id to %s",
                     id.c_str());
  writeAtStart(idPath, id);
}

// Read with "LocalTV" and written without it: peers and files know the second element too.
void Core::MultiDevice::ensureModel() {
  if (!readAtStart(modelPath).empty()) {
    return;
  }
  std::string model;
  getModelName(model);
  writeAtStart("/Zelv/Devices/Model/text()", model);
}

void Core::MultiDevice::terminate() {
  TraceScope trace("MultiDevice::terminate");
  if (mDiscoveryService) {
    mDiscoveryService->terminate();
  }
  if (mCoreData) {
    mCoreData->unregisterDataProvider(branch);
  }
}

}  // namespace Zelv
