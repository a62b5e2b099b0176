#include "zelv/core/AssetProvider.h"

#include <cstddef>
#include <set>
#include <stdexcept>
#include <utility>

#include "zelv/core/AssetPackage.h"
#include "zelv/core/AssetPackages.h"
#include "zelv/core/AssetRequest.h"
#include "zelv/core/AssetRequestHandler.h"
#include "zelv/core/AssetServer.h"
#include "zelv/infrastructure/ZelvFileUtil.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv {

using Infrastructure::HierarchicalDB;
using Infrastructure::ZelvFileUtil;
using Platform::Directories;

namespace {

char const* const assetsFile = "Assets.xml";

/// Bytes of a package that is loaded through the tree, and so by other devices.
constexpr std::size_t maximumPackage = std::size_t{4} << 20U;

// Every set answers for this one, so that a device can try out the port of assets.
char const* const builtInPackage =
    "<AssetPackage ID='A984A499-EBA5-4b04-BC74-08448843B7C0' name='test' path=''>\n"
    "  <TVImage src='tv.png' ID='A2CE030A-73DC-4c39-958B-E76657A31530' />\n"
    "</AssetPackage>\n";

void logError(char const* aWhere, std::exception const& aError) {
  PCRealDebug::Print(PCRealDebug::Error, "%s", aWhere);
  PCRealDebug::Print(PCRealDebug::Error, "Error: %s", aError.what());
}

}  // namespace

/// One write, on its way to a store.
struct Core::AssetProvider::Change {
  std::string const& xPath;
  /// The path without the branch.
  std::string const& path;
  std::string const& data;
  GUID const& transaction;
};

Core::AssetProvider::AssetProvider() : AssetProvider(InterfaceFactory::getInterface) {}

Core::AssetProvider::AssetProvider(FindInterface aFindInterface)
    : mBranchRoot("/Zelv/Storage/Assets"),
      mAssetsFile(Directories::Writable() + assetsFile),
      mPackages(std::make_unique<AssetPackages>()),
      mAssetServer(std::make_unique<AssetServer>(aFindInterface)),
      mFindInterface(aFindInterface) {
  TraceScope trace("AssetProvider::AssetProvider");
}

Core::AssetProvider::~AssetProvider() {
  TraceScope trace("AssetProvider::~AssetProvider");
  // First: its connections read from the packages.
  mAssetServer.reset();
}

void Core::AssetProvider::onStatus(StatusInformation const&, GUID const&) {
  TraceScope trace("AssetProvider::onStatus");
}

// Lifetime.

// The identifiers of transactions come by value, as the interfaces have it.
// NOLINTBEGIN(performance-unnecessary-value-param)

void Core::AssetProvider::onLifetime(eLifetimeCommand aCommand, GUID) {
  TraceScope trace("AssetProvider::onLifetime");
  if (aCommand == LIFETIME_INITIALISE && mLifetimeState == 0) {
    mLifetimeState = 1;
    m_initialize();
  } else if (aCommand == LIFETIME_START && mLifetimeState == 1) {
    mLifetimeState = 2;
    if (mCoreData != nullptr) {
      mCoreData->registerDataProvider(mBranchRoot, this);
    }
  } else if (aCommand == LIFETIME_STOP && mLifetimeState == 2) {
    mLifetimeState = 1;
  } else if (aCommand == LIFETIME_TERMINATE && (mLifetimeState == 1 || mLifetimeState == 2)) {
    mLifetimeState = 3;
    // The branch is not taken back: the worker of the tree ends before this object does.
    m_terminate();
  }
}

void Core::AssetProvider::m_initialize() {
  TraceScope trace("AssetProvider::m_initialize");
  loadMainStore();
  findTree();
  // The server has a port of its own and does not look at this one, which is that of user input.
  mAssetServer->initialize(this, "http://0.0.0.0:4449");
  m_LoadDefaultPackages();
}

void Core::AssetProvider::loadMainStore() {
  if (ZelvFileUtil::checkIsFileAvailable(assetsFile, Directories::Writable(), true) != 0) {
    throw std::runtime_error(
        "in AssetProvider::m_initialize: Failed to load Assets file and could not restore!");
  }
  auto store = std::make_unique<HierarchicalDB>();
  if (store->loadFromFile(mAssetsFile) != 0) {
    throw std::runtime_error("AssetProvider Failed to Read from File or File was not valid XML!");
  }
  mMainStore = std::move(store);
}

void Core::AssetProvider::findTree() {
  mCoreData = dynamic_cast<ICoreData*>(mFindInterface(IID_ICoreData));
  if (mCoreData == nullptr) {
    throw std::runtime_error("AssetProvider Failed to get ICoreData Interface");
  }
}

void Core::AssetProvider::m_terminate() {
  TraceScope trace("AssetProvider::m_terminate");
  if (mAssetServer) {
    mAssetServer->terminate();
  }
}

// Packages.

void Core::AssetProvider::m_LoadDefaultPackages() {
  m_LoadAssetPackage(builtInPackage, Directories::Writable());
}

bool Core::AssetProvider::m_LoadAssetPackage(std::string const& aXml, std::string const& aPath) {
  TraceScope trace("AssetProvider::m_LoadAssetPackage");
  std::shared_ptr<AssetPackage> package;
  try {
    if (aXml.size() > maximumPackage) {
      throw std::runtime_error("AssetPackage: Too long!");
    }
    package = std::make_shared<AssetPackage>(aXml, aPath);
  } catch (std::exception const& error) {
    logError("KOR::AssetProvider::m_LoadAssetPackage() Failed to create a new asset package",
             error);
    return false;
  }
  return addPackage(package);
}

bool Core::AssetProvider::addPackage(std::shared_ptr<AssetPackage> aPackage) {
  std::string name;
  std::string content;
  if (aPackage->getContent("/AssetPackage/@name", name) != 0 ||
      aPackage->getContent("/AssetPackage", content) != 0) {
    return false;
  }
  return mPackages->insert(name, std::move(aPackage));
}

bool Core::AssetProvider::m_UnloadAssetPackage(std::string const& aName) {
  TraceScope trace("AssetProvider::m_UnloadAssetPackage");
  return mPackages->remove(aName);
}

// Paths.

std::string Core::AssetProvider::withoutRoot(std::string const& aXPath) const {
  std::string path = aXPath;
  path.erase(0, mBranchRoot.size());
  return path;
}

namespace {

/// The text between the first quote behind aFrom and the next one like it. Without a quote there is
/// no text; without a second one it goes on to the end.
std::string quotedText(std::string const& aPath, std::size_t aFrom) {
  std::size_t const open = aPath.find_first_of("'\"", aFrom);
  if (open == std::string::npos) {
    return "";
  }
  std::size_t const close = aPath.find(aPath[open], open + 1);
  return aPath.substr(open + 1, close == std::string::npos ? close : close - open - 1);
}

}  // namespace

Core::AssetProvider::TargetPackage Core::AssetProvider::m_ExtractTargetPackageType(
    std::string const& aPath, std::string& aKey) {
  std::size_t const end = aPath.find_first_of("/[", 1);
  if (end == std::string::npos) {
    return FAIL_READ_PACKAGE;
  }
  if (aPath.compare(1, end - 1, "AssetPackage") != 0) {
    return NOT_A_PACKAGE;
  }
  std::size_t const predicateEnd = aPath.find_first_of("]/", end - 1);
  if (predicateEnd == end || predicateEnd == std::string::npos) {
    return NOSPEC_PACKAGE;
  }
  std::size_t const name = aPath.find("@name", end);
  if (name < predicateEnd) {
    aKey = quotedText(aPath, name);
    return NAMED_PACKAGE;
  }
  // From where the search for the name ended, that is, never from within the predicate: so nothing
  // is ever taken for a question by ID. Those who read by ID are answered from all packages, and
  // those who write by ID are refused; both is relied upon.
  std::size_t const id = aPath.find("@ID", name);
  if (id < predicateEnd) {
    aKey = quotedText(aPath, id);
    return IDDEF_PACKAGE;
  }
  return NOSPEC_PACKAGE;
}

std::shared_ptr<Core::AssetProvider::AssetPackage> Core::AssetProvider::find(
    TargetPackage aTarget, std::string const& aKey) {
  return aTarget == NAMED_PACKAGE ? mPackages->find(aKey) : mPackages->findByID(aKey);
}

// Reading.

int Core::AssetProvider::getData(std::string const& aXPath, std::string& aData, GUID) {
  TraceScope trace("AssetProvider::getData");
  std::string const path = withoutRoot(aXPath);
  std::string key;
  TargetPackage const target = m_ExtractTargetPackageType(path, key);
  try {
    read(target, key, path, aData);
  } catch (std::exception const& error) {
    logError(target == NOT_A_PACKAGE ? "KOR::AssetProvider::getData() (local) An error ocurred "
                                       "with HierarchichalDB:"
                                     : "KOR::AssetProvider::getData() (external) An error ocurred "
                                       "with HierarchichalDB:",
             error);
    aData.clear();
  }
  return 0;
}

void Core::AssetProvider::read(TargetPackage aTarget, std::string const& aKey,
                               std::string const& aPath, std::string& aData) {
  switch (aTarget) {
    case NAMED_PACKAGE:
    case IDDEF_PACKAGE:
      readPackage(find(aTarget, aKey), aPath, aData);
      break;
    case NOSPEC_PACKAGE:
      mPackages->read(aPath, aData);
      break;
    case NOT_A_PACKAGE:
      readMain(aPath, aData);
      break;
    case FAIL_READ_PACKAGE:
      break;
  }
}

void Core::AssetProvider::readPackage(std::shared_ptr<AssetPackage> const& aPackage,
                                      std::string const& aPath, std::string& aData) {
  if (!aPackage || aPackage->getContent(aPath, aData) != 0) {
    aData.clear();
  }
}

void Core::AssetProvider::readMain(std::string const& aPath, std::string& aData) {
  TCAutoLock lock(mMainLock);
  if (!mMainStore || mMainStore->getContent("/Assets" + aPath, aData) != 0) {
    aData.clear();
  }
}

// Writing.

int Core::AssetProvider::setData(std::string const& aXPath, std::string const& aData,
                                 GUID aTransactionID) {
  TraceScope trace("AssetProvider::setData");
  std::string const path = withoutRoot(aXPath);
  std::string key;
  TargetPackage const target = m_ExtractTargetPackageType(path, key);
  try {
    return write(target, key, {aXPath, path, aData, aTransactionID});
  } catch (std::exception const& error) {
    logError(target == NOT_A_PACKAGE ? "KOR::AssetProvider::setData() (internal) An error ocurred "
                                       "with HierarchichalDB:"
                                     : "KOR::AssetProvider::setData() (external) An error ocurred "
                                       "with HierarchichalDB:",
             error);
    return -1;
  }
}

int Core::AssetProvider::write(TargetPackage aTarget, std::string const& aKey,
                               Change const& aChange) {
  switch (aTarget) {
    case NAMED_PACKAGE:
    case IDDEF_PACKAGE:
      return writePackage(find(aTarget, aKey), aKey, aChange);
    case NOSPEC_PACKAGE:
      return -1;
    case NOT_A_PACKAGE:
      return writeMain(aChange);
    case FAIL_READ_PACKAGE:
      break;
  }
  return 0;
}

// The file is not written: what applications add here is for one run of the set.
int Core::AssetProvider::writeMain(Change const& aChange) {
  if (!mMainStore || mMainStore->setContent("/Assets" + aChange.path, aChange.data, false) != 0) {
    throw std::runtime_error("AssetProvider::Set Data on Main Repository Failed!");
  }
  notify(aChange);
  return 0;
}

int Core::AssetProvider::writePackage(std::shared_ptr<AssetPackage> const& aPackage,
                                      std::string const& aKey, Change const& aChange) {
  // However deep the path goes: an empty value takes the whole package away.
  if (aChange.data.empty()) {
    return m_UnloadAssetPackage(aKey) ? 0 : -1;
  }
  if (!aPackage) {
    return writeMissing(aChange);
  }
  int const result = hasRoomFor(aChange) ? aPackage->setContent(aChange.path, aChange.data) : -1;
  if (result != 0) {
    PCRealDebug::Print(PCRealDebug::Error, "AssetProvider::setData() setContent gives %d", result);
    throw std::runtime_error("AssetProvider::Set Data on Store Repository Failed!");
  }
  notify(aChange);
  if (aPackage->persists() && !aPackage->save()) {
    throw std::runtime_error("AssetProvider::File save failed!");
  }
  return 0;
}

bool Core::AssetProvider::hasRoomFor(Change const& aChange) {
  if (mPackages->hasRoomFor(aChange.data.size())) {
    return true;
  }
  PCRealDebug::Print(PCRealDebug::Warning,
                     "AssetProvider::setData() No room for %u bytes more in packages.",
                     static_cast<unsigned>(aChange.data.size()));
  return false;
}

int Core::AssetProvider::writeMissing(Change const& aChange) {
  PCRealDebug::Print(PCRealDebug::Error,
                     "KOR::AssetProvider::setData() requested xpath:%s not found",
                     aChange.xPath.c_str());
  if (aChange.path.find('/', 1) != std::string::npos) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "AssetProvider::setData() Set Data on Store Repository Failed! xml: %s to "
                       "path: %s \n",
                       aChange.data.c_str(), aChange.path.c_str());
    return -1;
  }
  if (!m_LoadAssetPackage(aChange.data, "")) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "AssetProvider::setData() Failed to add a new asset package from xml: %s to "
                       "path: %s \n",
                       aChange.data.c_str(), aChange.path.c_str());
    return -1;
  }
  return 0;
}

void Core::AssetProvider::notify(Change const& aChange) {
  if (mCoreData != nullptr) {
    mCoreData->notifyDataSubscribers(aChange.xPath, aChange.data, aChange.transaction);
  }
}

int Core::AssetProvider::addData(std::string const& aXPath, std::string const& aData,
                                 GUID aTransactionID) {
  TraceScope trace("AssetProvider::addData");
  setData(aXPath, aData, aTransactionID);
  return 0;
}

int Core::AssetProvider::onSubscribe(std::string const&, GUID) {
  TraceScope trace("AssetProvider::onSubscribe");
  return 0;
}

int Core::AssetProvider::onUnsubscribe(std::string const&, GUID) {
  TraceScope trace("AssetProvider::onUnsubscribe");
  return 0;
}

// Requests.

int Core::AssetProvider::handleAssetRequest(std::string const& aRequest,
                                            AssetRequestHandler* aHandler, GUID) {
  return handleAssetRequest(aRequest, *aHandler);
}

// NOLINTEND(performance-unnecessary-value-param)

int Core::AssetProvider::handleAssetRequest(std::string const& aRequest, AssetParts& aParts) {
  TraceScope trace("AssetProvider::handleAssetRequest");
  auto const read = [this](std::string const& aPath, std::string& aResult) {
    return getData(mBranchRoot + aPath, aResult, GUID::nullGUID);
  };
  auto const removeNamed = [this](std::set<std::string>& aPaths) {
    mPackages->removeNamed(aPaths);
  };
  return AssetRequest(read, removeNamed, aParts).handle(aRequest);
}

}  // namespace Zelv
