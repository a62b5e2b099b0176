#include "zelv/core/AssetServer.h"

#include <utility>

#include "zelv/core/AssetConnectionListener.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv {

namespace {

constexpr char const* addressPath =
    "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";

}  // namespace

Core::AssetServer::AssetServer() : AssetServer(InterfaceFactory::getInterface) {}

Core::AssetServer::AssetServer(FindInterface aFindInterface) : mFindInterface(aFindInterface) {}

Core::AssetServer::~AssetServer() {
  TraceScope trace("AssetServer::~AssetServer");
  terminate();
  Listeners listeners;
  {
    TCAutoLock lock(mLock);
    listeners.swap(mReplaced);
    if (mListener) {
      listeners.push_back(std::move(mListener));
    }
  }
  for (auto const& listener : listeners) {
    listener->endConnections();
  }
  for (auto const& listener : listeners) {
    PCRealDebug::Print(PCRealDebug::Trace,
                       "AssetServer::~AssetServer: Waiting for a join on threadID = %d.",
                       static_cast<int>(listener->GetId()));
    listener->Destroy();
  }
}

void Core::AssetServer::onStatus(StatusInformation const&, GUID const&) {
  PCRealDebug::Print(PCRealDebug::Detail, "AssetServer::onStatus: The address was not read.");
}

bool Core::AssetServer::initialize(IAssetProvider* aProvider, std::string const&) {
  TraceScope trace("AssetServer::initialize");
  if (aProvider == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetServer::initialize: Invalid Asset Provider pointer.");
    return false;
  }
  auto* const data = dynamic_cast<ICoreData*>(mFindInterface(IID_ICoreData));
  if (data == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetServer::initialize: Failed to obtain ICoreData interface.");
    return false;
  }
  {
    TCAutoLock lock(mLock);
    mProvider = aProvider;
    mTerminated = false;
  }
  // Without the lock, which onData() takes under those of the tree. Nothing is missed: the answer
  // comes with the data worker, which starts after the components.
  GUID const id = data->subscribeData(addressPath, nullptr, this);
  TCAutoLock lock(mLock);
  mSubscriptionId = id;
  return true;
}

void Core::AssetServer::onData(std::string const&, std::string const& aValue,
                               ContextInformation const*, GUID const& aTransactionID) {
  TraceScope trace("AssetServer::onData");
  TCAutoLock lock(mLock);
  if (!(aTransactionID == mSubscriptionId) || mTerminated) {
    return;
  }
  PCRealDebug::Print(PCRealDebug::Detail, "AssetServer::onData: Local IP='%s'", aValue.c_str());
  closeListener();
  startListener();
}

void Core::AssetServer::startListener() {
  auto listener = std::make_unique<AssetConnectionListener>();
  if (!listener->initialize(mProvider)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetServer::onData: Error initializing Asset Connection Listener !!!!");
    return;
  }
  if (!listener->Create("Quorl - AssetServer::onData", 0x1000)) {
    PCRealDebug::Print(PCRealDebug::Error, "AssetServer::onData: Error creating a new thread");
    return;
  }
  mListener = std::move(listener);
}

// The clients of a listener that is replaced get what they asked for.
void Core::AssetServer::closeListener() {
  reapReplaced();
  if (mListener) {
    mListener->closeConnectionListener();
    mReplaced.push_back(std::move(mListener));
  }
}

void Core::AssetServer::reapReplaced() {
  mReplaced.remove_if([](auto const& aListener) { return aListener->isFinished(); });
  std::size_t tooMany = mReplaced.size() > MaxReplaced ? mReplaced.size() - MaxReplaced : 0;
  for (auto listener = mReplaced.begin(); tooMany > 0; ++listener, --tooMany) {
    (*listener)->endConnections();
  }
}

void Core::AssetServer::terminate() {
  TraceScope trace("AssetServer::terminate");
  TCAutoLock lock(mLock);
  mTerminated = true;
  if (mListener) {
    mListener->closeConnectionListener();
  }
}

}  // namespace Zelv
