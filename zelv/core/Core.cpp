#include "zelv/core/Core.h"

#include <exception>
#include <filesystem>
#include <string>
#include <system_error>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCFile.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/Shell.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv {

namespace {

using Platform::Directories;
using Platform::Shell;

/// Nothing looks at how a line ends: what is missing afterwards is found, file by file, by the
/// components.
void runAndSync(std::string const& aLine) {
  Shell::Run(aLine);
  Shell::Run("sync");
}

void makeFilesWritable(std::string const& aDirectory) {
  // The line changes whatever stands where the shell is; a directory that could not be entered
  // would turn it on the files of the host program.
  std::error_code ignored;
  if (!std::filesystem::is_directory(aDirectory, ignored)) {
    PCRealDebug::Print(PCRealDebug::Error, "Core::copyDataDirectoryFiles: no directory '%s'.",
                       aDirectory.c_str());
    return;
  }
  runAndSync("cd " + aDirectory + "; chmod 777 *");
}

void seed(std::string const& aReadOnly, std::string const& aWritable) {
  if (!Shell::IsPlain(aReadOnly) || !Shell::IsPlain(aWritable)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "Core::copyDataDirectoryFiles: '%s' or '%s' is no plain name.",
                       aReadOnly.c_str(), aWritable.c_str());
    return;
  }
  runAndSync("mkdir -m 777 -p " + aWritable);
  runAndSync("cp " + aReadOnly + "* " + aWritable);
  makeFilesWritable(aWritable);
}

}  // namespace

Core* Core::theCore = nullptr;

Core::Core() : mDataController("") {}

Core::~Core() {
  theCore = nullptr;
}

Core* Core::getCore() {
  if (theCore == nullptr) {
    // Known before it starts: components ask for it while they are brought up.
    theCore = new Core;
    theCore->initialize();
  }
  return theCore;
}

Core* Core::requestCore() {
  return theCore;
}

void Core::initialize() {
  TraceScope trace("Core::initialize");
  mNetworkAdapter = Adapter::NetworkAdapter::getInstance();
  copyDataDirectoryFiles();
  mTimerController.initialize();
  mEnvironmentController.initialize();
  mLifetimeController.initialize();
  mDataController.initialize();
  mCommandController.initialize();
  mUserController.initialize();
}

void Core::terminate() {
  TraceScope trace("Core::terminate");
  std::exception_ptr thrown;
  try {
    mLifetimeController.terminate();
  } catch (...) {
    // The worker has to be at rest all the same, before anybody deletes what it works with.
    thrown = std::current_exception();
  }
  mUserController.terminate();
  mCommandController.terminate();
  mDataController.terminate();
  mTimerController.terminate();
  endNetwork();
  if (thrown) {
    // Those after the one that threw were not told to end, and may have timers that tell them.
    mTimerController.destroyAllTimers();
    std::rethrow_exception(thrown);
  }
}

// Last, so that goodbyes still went out; and all sockets close before the first thread is waited
// for.
void Core::endNetwork() {
  if (mNetworkAdapter != nullptr) {
    mNetworkAdapter->terminate();
    delete mNetworkAdapter;
    mNetworkAdapter = nullptr;
  }
}

int Core::copyDataDirectoryFiles() {
  TraceScope trace("Core::copyDataDirectoryFiles");
  // The slash is doubled; logs of the platform show the path this way.
  std::string const sign = Directories::Writable() + "/Devices.xml";
  PCFile file;
  if (file.Create(sign.c_str(), 0)) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "Core::copyDataDirectoryFiles: Data Folder and files are present in the RW "
                       "Area...");
    file.Destroy();
    return 1;
  }
  PCRealDebug::Print(PCRealDebug::Detail,
                     "Core::copyDataDirectoryFiles: Copying Data Folder from RO to RW area...");
  seed(Directories::ReadOnly(), Directories::Writable());
  return 1;
}

CApplication* Core::getZelvApp() {
  return g_TaskManager.GetApplication(DTV_APPLICATION_ZELV);
}

void Core::raiseEvent(Event*) {
  PCRealDebug::Print(PCRealDebug::Warning,
                     "Core::raiseEvent: TVControl or remote control event. TOLMAR: not used by "
                     "Quorl and removed, do nothing");
}

void Core::sendReturn(std::string const& aValue, CommandArgs const& aArgs) {
  mCommandController.sendReturn(aValue, aArgs);
}

void Core::cancelReturns() {
  mCommandController.cancelReturns();
}

GUID Core::setData(std::string const& aXPath, std::string const& aValue,
                   IBaseDataCallback* aCallback, bool aNotifyRemoteSubscribers) {
  return mDataController.setData(aXPath, aValue, aCallback, aNotifyRemoteSubscribers);
}

GUID Core::addData(std::string const& aXPath, std::string const& aValue,
                   IBaseDataCallback* aCallback, bool aNotifyRemoteSubscribers) {
  return mDataController.addData(aXPath, aValue, aCallback, aNotifyRemoteSubscribers);
}

GUID Core::requestData(std::string const& aXPath, ContextInformation const* aContext,
                       IBaseDataCallback* aCallback) {
  return mDataController.requestData(aXPath, aContext, aCallback);
}

GUID Core::subscribeData(std::string const& aXPath, ContextInformation const* aContext,
                         IBaseDataCallback* aCallback) {
  return mDataController.subscribeData(aXPath, aContext, aCallback);
}

void Core::unsubscribeData(GUID aSubscriptionID) {
  mDataController.unsubscribeData(aSubscriptionID);
}

void Core::registerDataProvider(std::string const& aXPath, IDataProvider* aProvider) {
  mDataController.registerDataProvider(aXPath, aProvider);
}

void Core::unregisterDataProvider(std::string const& aXPath) {
  mDataController.unregisterDataProvider(aXPath);
}

void Core::notifyDataSubscribers(std::string const& aXPath, std::string const& aValue,
                                 GUID const& aTransactionID) {
  mDataController.notifyDataSubscribers(aXPath, aValue, aTransactionID);
}

void Core::notifyDataSubscriber(GUID const& aSubscriptionID, std::string const& aValue) {
  mDataController.notifyDataSubscriber(aSubscriptionID, aValue);
}

GUID Core::registerComponent(std::string const& aComponentName, IBaseLifetimeCallback* aComponent) {
  return mEnvironmentController.registerComponent(aComponentName, aComponent);
}

std::map<std::string, IBaseLifetimeCallback*> Core::getRegisteredComponents() {
  return mEnvironmentController.getRegisteredComponents();
}

IBaseLifetimeCallback* Core::getComponent(std::string aComponentName) {
  return mEnvironmentController.getComponent(aComponentName);
}

GUID Core::setLifetimeState(eLifetimeCommand aCommand, std::string const& aComponentName,
                            IBaseLifetimeCallback* aCallback) {
  return mLifetimeController.setLifetimeState(aCommand, aComponentName, aCallback);
}

GUID Core::executeCommand(std::string const& aCommand, std::string const& aDeviceID,
                          IBaseCommandCallback* aCallback) {
  return mCommandController.executeCommand(aCommand, aDeviceID, aCallback);
}

void Core::discardCommandCallback(IBaseCommandCallback* aCallback) {
  mCommandController.discardCommandCallback(aCallback);
}

GUID Core::registerCommandHandler(std::string const& aCommandName, IBaseCommandHandler* aHandler) {
  return mCommandController.registerCommandHandler(aCommandName, aHandler);
}

void Core::unregisterCommandHandler(GUID const& aHandle) {
  mCommandController.unregisterCommandHandler(aHandle);
}

GUID Core::createTimer(unsigned int aTimeMs, int aRepeat, std::string const& aTimerName,
                       IBaseTimerCallback* aCallback) {
  return mTimerController.createTimer(aTimeMs, aRepeat, aTimerName, aCallback);
}

void Core::destroyTimer(GUID const& aTimerID, IBaseTimerCallback* aCallback) {
  mTimerController.destroyTimer(aTimerID, aCallback);
}

void Core::resetTimer(GUID const& aTimerID, unsigned int aTimeMs, int aRepeat) {
  mTimerController.resetTimer(aTimerID, aTimeMs, aRepeat);
}

GUID Core::subscribeUser(std::string const& aType, IBaseUserCallback* aCallback) {
  return mUserController.subscribeUser(aType, aCallback);
}

void Core::unsubscribeUser(GUID aSubscriptionID) {
  mUserController.unsubscribeUser(aSubscriptionID);
}

// The three texts name another class than the one that logs them; readers of logs know them so.

void Core::unregisterComponent(std::string const&) {
  PCRealDebug::Print(PCRealDebug::Warning, "DataController::unregisterComponent: not implemented!");
}

void Core::updateSubscriberStatus(GUID, std::string const&) {
  PCRealDebug::Print(PCRealDebug::Warning,
                     "DataController::updateSubscriberStatus: not implemented!");
}

void Core::unsubscribeForAllData(std::string const&) {
  PCRealDebug::Print(PCRealDebug::Warning,
                     "DataController::unsubscribeForAllData: not implemented!");
}

void Core::onData(std::string const&, std::string const&, ContextInformation const*, GUID const&) {}

void Core::onStatus(StatusInformation const&, GUID const&) {}

}  // namespace Zelv
