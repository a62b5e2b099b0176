#include "zelv/core/GenericDataProvider.h"

#include <stdexcept>
#include <utility>

#include "zelv/core/DocumentFile.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv {

using Infrastructure::HierarchicalDB;

namespace {

enum State { Created = 0, Loaded = 1, Running = 2, Terminated = 3 };

/// Null, with the failure logged, when there is no tree.
ICoreData* findCoreData() {
  auto* const coreData = dynamic_cast<ICoreData*>(InterfaceFactory::getInterface(IID_ICoreData));
  if (coreData == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "GenericDataProvider::initialize: Failed to obtain ICoreData interface.");
  }
  return coreData;
}

}  // namespace

Core::GenericDataProvider::GenericDataProvider(std::string aBaseXPath, std::string aDataFileName,
                                               bool aPersist)
    : mBaseXPath(std::move(aBaseXPath)),
      mDataFileName(std::move(aDataFileName)),
      mPersist(aPersist) {}

Core::GenericDataProvider::~GenericDataProvider() {
  TraceScope trace("GenericDataProvider::~GenericDataProvider");
}

/// The document's root element is the branch's last step, so the step "/Zelv/" before it goes.
/// Other paths stay as they are.
std::string Core::GenericDataProvider::databasePath(std::string const& aXPath) const {
  std::string path = aXPath;
  if (path.starts_with(mBaseXPath)) {
    path.erase(0, 6);
  }
  return path;
}

int Core::GenericDataProvider::getData(std::string const& aXPath, std::string& aData, GUID) {
  TraceScope trace("GenericDataProvider::getData");
  if (!mDatabase || mDatabase->getContent(databasePath(aXPath), aData) != 0) {
    throw std::runtime_error("in GenericDataProvider::getData: data not found for '" + aXPath +
                             "'.");
  }
  return 0;
}

int Core::GenericDataProvider::setData(std::string const& aXPath, std::string const& aData,
                                       GUID aTransactionID) {
  TraceScope trace("GenericDataProvider::setData");
  int const result =
      mDatabase ? mDatabase->setContent(databasePath(aXPath), aData, /*aCreate=*/false) : -1;
  if (result != 0) {
    return result;
  }
  if (mPersist) {
    save();
  }
  if (mCoreData != nullptr) {
    mCoreData->notifyDataSubscribers(aXPath, aData, aTransactionID);
  }
  return result;
}

void Core::GenericDataProvider::save() {
  if (!DocumentFile::save(*mDatabase, mDataFileName, "GenericDataProvider::setData")) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "GenericDataProvider::setData: File save failed, data not comitted.");
    throw std::runtime_error("File save failed!");
  }
}

int Core::GenericDataProvider::addData(std::string const&, std::string const&, GUID) {
  TraceScope trace("GenericDataProvider::addData");
  return 0;
}

int Core::GenericDataProvider::onSubscribe(std::string const&, GUID) {
  TraceScope trace("GenericDataProvider::onSubscribe");
  return 0;
}

int Core::GenericDataProvider::onUnsubscribe(std::string const&, GUID) {
  TraceScope trace("GenericDataProvider::onUnsubscribe");
  return 0;
}

void Core::GenericDataProvider::onStatus(StatusInformation const&, GUID const&) {
  TraceScope trace("GenericDataProvider::onStatus");
}

void Core::GenericDataProvider::onLifetime(eLifetimeCommand aCommand, GUID) {
  TraceScope trace("GenericDataProvider::onLifetime");
  switch (aCommand) {
    case LIFETIME_INITIALISE:
      initialize();
      break;
    case LIFETIME_START:
      mState = mState == Loaded ? Running : mState;
      break;
    case LIFETIME_STOP:
      mState = mState == Running ? Loaded : mState;
      break;
    case LIFETIME_TERMINATE:
      terminate();
      break;
    default:
      break;
  }
}

void Core::GenericDataProvider::initialize() {
  if (mState != Created) {
    return;
  }
  mDatabase = std::make_unique<HierarchicalDB>();
  mDatabase->loadFromFile(mDataFileName);
  mCoreData = findCoreData();
  if (mCoreData == nullptr) {
    return;
  }
  mCoreData->registerDataProvider(mBaseXPath, this);
  mState = Loaded;
}

void Core::GenericDataProvider::terminate() {
  if (mState == Loaded || mState == Running) {
    mState = Terminated;
  }
  if (ICoreData* const coreData = findCoreData()) {
    coreData->unregisterDataProvider(mBaseXPath);
  }
}

}  // namespace Zelv
