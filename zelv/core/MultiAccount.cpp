#include "zelv/core/MultiAccount.h"

#include <list>
#include <stdexcept>

#include "zelv/core/DocumentFile.h"
#include "zelv/infrastructure/MultiString.h"
#include "zelv/infrastructure/XPathGate.h"
#include "zelv/infrastructure/ZelvFileUtil.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv {

using Infrastructure::HierarchicalDB;
using Infrastructure::MultiString;
using Infrastructure::XPathGate;
using Infrastructure::ZelvFileUtil;
using Platform::Directories;

namespace {

char const* const branch = "/Zelv/Users";
char const* const usersFile = "Users.xml";
char const* const userPath = "Users/User";
std::string const userTag = "<User";

std::string fullPath() {
  return Directories::Writable() + usersFile;
}

/// The path in the document, whose root element is the last step of the branch.
std::string documentPath(std::string const& aXPath) {
  return aXPath.starts_with(branch) ? aXPath.substr(6) : aXPath;
}

}  // namespace

Core::MultiAccount::MultiAccount() : MultiAccount(InterfaceFactory::getInterface) {}

Core::MultiAccount::MultiAccount(FindInterface aFindInterface) : mFindInterface(aFindInterface) {
  TraceScope trace("MultiAccount::MultiAccount");
  std::string const path = fullPath();
  if (ZelvFileUtil::checkIsFileAvailable(usersFile, Directories::Writable(), true) != 0) {
    // The name of the other class stands here since the two were one; logs are searched for it.
    PCRealDebug::Print(PCRealDebug::Error, "MultiDevice::MultiDevice: Users File not found '%s'.",
                       path.c_str());
  }
  PCRealDebug::Print(PCRealDebug::Notable, "MultiDevice::MultiDevice: Users File %s ok.",
                     path.c_str());
  mUsers = std::make_unique<HierarchicalDB>();
  mUsers->loadFromFile(path);
  clearLoginTV();
}

Core::MultiAccount::~MultiAccount() {
  TraceScope trace("MultiAccount::~MultiAccount");
  mUsers.reset();
}

// A login does not outlast a restart of the set. The file hears of it with the next change.
int Core::MultiAccount::clearLoginTV() {
  TraceScope trace("MultiAccount::clearLoginTV");
  std::string ids;
  int const found = mUsers->getContent("/Users/User/@ID", ids);
  if (found != 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiAccount::clearLoginTV: Failed to retrieve users' ID.");
    return found;
  }
  // At this level although nothing has failed: it is how the users of a set are found in its log.
  PCRealDebug::Print(PCRealDebug::Error, "MultiAccount::clearLoginTV: userIDs=%s.", ids.c_str());
  int skipped = 0;
  for (std::string const& id : MultiString::split(ids)) {
    int const result = clearLoginOf(id);
    if (result == 0) {
      continue;
    }
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiAccount::clearLoginTV: Failed to set loggedinTV to empty for user %s.",
                       id.c_str());
    if (XPathGate::isQuotableLiteral(id)) {
      return result;
    }
    // Such an ID is a stranger's, who is not to keep the others logged in.
    skipped = result;
  }
  return skipped;
}

int Core::MultiAccount::clearLoginOf(std::string const& aId) {
  if (!XPathGate::isQuotableLiteral(aId)) {
    return -1;
  }
  return mUsers->setContent("/Users/User[@ID='" + aId + "']/LoggedInTv/text()", "", false);
}

// The identifiers of transactions come by value, as the interface has it.
// NOLINTBEGIN(performance-unnecessary-value-param)

int Core::MultiAccount::getData(std::string const& aXPath, std::string& aData, GUID) {
  TraceScope trace("MultiAccount::getData");
  if (mUsers->getContent(documentPath(aXPath), aData) != 0) {
    throw std::runtime_error("in MultiAccount::getData: data not found for '" + aXPath + "'.");
  }
  return 0;
}

int Core::MultiAccount::setData(std::string const& aXPath, std::string const& aData,
                                GUID aTransactionID) {
  TraceScope trace("MultiAccount::setData");
  int const result = mUsers->setContent(documentPath(aXPath), aData, false);
  if (result != 0) {
    return result;
  }
  if (!save()) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiAccount::setData: File save failed, data not comitted.");
    throw std::runtime_error("Fil save failed!");
  }
  if (mCoreData != nullptr) {
    mCoreData->notifyDataSubscribers(aXPath, aData, aTransactionID);
  }
  return 0;
}

int Core::MultiAccount::addData(std::string const& aXPath, std::string const& aData,
                                GUID aTransactionID) {
  TraceScope trace("MultiAccount::addData");
  std::string const path = documentPath(aXPath);
  if (!path.starts_with(userPath) || !aData.starts_with(userTag)) {
    return 0;
  }
  std::string const id = GUID::createGUID().toString();
  {
    TCAutoLock lock(mLock);
    mLastGenId = id;
  }
  std::string const attribute = "ID='" + id + "'";
  std::string const data = std::string(aData).insert(userTag.size(), " " + attribute);
  // Without an "@" it asks for an element, which no user has. So it replaces nobody, and serves
  // only to name the parent.
  std::string const newXPath = path + "[" + attribute + "]";
  PCRealDebug::Print(PCRealDebug::Detail, "MultiAccount::addData: newXPath = '%s' data='%s'",
                     newXPath.c_str(), data.c_str());
  int const result = mUsers->setContent(newXPath, data, false);
  if (result != 0) {
    return result;
  }
  if (!save()) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiAccount::addData: File save failed, data not comitted.");
    throw std::runtime_error("File save failed!");
  }
  if (mCoreData != nullptr) {
    // Offers the ID to whoever asked for the user.
    mCoreData->updateSubscriberStatus(aTransactionID, id);
    mCoreData->notifyDataSubscribers(aXPath, aData, aTransactionID);
  }
  return 0;
}

// NOLINTEND(performance-unnecessary-value-param)

/// Through a temporary file, so that the users stay whole if the set goes down meanwhile.
bool Core::MultiAccount::save() {
  return DocumentFile::save(*mUsers, fullPath(), "MultiAccount::save");
}

int Core::MultiAccount::onSubscribe(std::string const&, GUID) {
  TraceScope trace("MultiAccount::onSubscribe");
  return 0;
}

int Core::MultiAccount::onUnsubscribe(std::string const&, GUID) {
  TraceScope trace("MultiAccount::onUnsubscribe");
  return 0;
}

void Core::MultiAccount::onStatus(StatusInformation const&, GUID const&) {
  TraceScope trace("MultiAccount::onStatus");
}

void Core::MultiAccount::onLifetime(eLifetimeCommand aCommand, GUID) {
  TraceScope trace("MultiAccount::onLifetime");
  switch (aCommand) {
    case LIFETIME_INITIALISE:
      mLifetimeState = mLifetimeState == 0 ? 1 : mLifetimeState;
      initialize();
      break;
    case LIFETIME_START:
      mLifetimeState = mLifetimeState == 1 ? 2 : mLifetimeState;
      if (mCoreData != nullptr) {
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

void Core::MultiAccount::getLastGenId(std::string& aId) {
  TCAutoLock lock(mLock);
  aId = mLastGenId;
}

void Core::MultiAccount::initialize() {
  TraceScope trace("MultiAccount::initialize");
  mCoreData = dynamic_cast<ICoreData*>(mFindInterface(IID_ICoreData));
  if (mCoreData == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiAccount::initialize: Failed to obtain ICoreData interface.");
  }
}

void Core::MultiAccount::terminate() {
  TraceScope trace("MultiAccount::terminate");
  if (mCoreData != nullptr) {
    mCoreData->unregisterDataProvider(branch);
  }
}

}  // namespace Zelv
