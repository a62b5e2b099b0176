#include "zelv/adapter/NetworkAdapter.h"

#include <set>

#include "zelv/adapter/NetworkConnection.h"
#include "zelv/adapter/SendCancel.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Adapter {

using Infrastructure::GUID;
using Infrastructure::URL;

namespace {

/// Prepares the listener's socket as its protocol wants it; says why not.
bool prepareListener(NetworkConnection& aConnection, std::string const& aProtocol) {
  if (aProtocol == "tcp") {
    if (!aConnection.createTCPListener()) {
      PCRealDebug::Print(PCRealDebug::Error,
                         "NetworkAdapter::spawnMessageListener: createTCPListener failed.");
      return false;
    }
    PCRealDebug::Print(
        PCRealDebug::Notable,
        "NetworkAdapter::spawnMessageListener: Created a new tcp listener connection.");
    return true;
  }
  if (aProtocol == "udp") {
    if (!aConnection.createUDPHandler()) {
      PCRealDebug::Print(PCRealDebug::Error,
                         "NetworkAdapter::spawnMessageListener: createUDPHandler failed.");
      return false;
    }
    PCRealDebug::Print(
        PCRealDebug::Notable,
        "NetworkAdapter::spawnMessageListener: Created a new udp handler connection.");
    return true;
  }
  PCRealDebug::Print(PCRealDebug::Error,
                     "NetworkAdapter::spawnMessageListener: TCP / UDP flag not set!!!.");
  return false;
}

bool prepareSender(NetworkConnection& aConnection, std::string const& aProtocol) {
  if (aProtocol == "tcp") {
    return aConnection.createTCPConnection();
  }
  if (aProtocol == "udp") {
    return aConnection.createUDPConnection();
  }
  PCRealDebug::Print(PCRealDebug::Error,
                     "NetworkAdapter::send: Not a valid Transport Protocol !!.");
  return false;
}

}  // namespace

NetworkAdapter* NetworkAdapter::mpInstance = nullptr;

NetworkAdapter* NetworkAdapter::getInstance() {
  if (!mpInstance) {
    mpInstance = new NetworkAdapter;
  }
  return mpInstance;
}

NetworkAdapter::~NetworkAdapter() {
  TraceScope trace("NetworkAdapter::~NetworkAdapter");
  // All of them before the first wait, so that the waits run side by side.
  for (auto const& connection : mConnections) {
    if (!connection->isClosed()) {
      connection->closeConnection();
    }
  }
  for (auto& connection : mConnections) {
    PCRealDebug::Print(PCRealDebug::Trace,
                       "NetworkAdapter::~NetworkAdapter: Waiting for a join on threadID = %d.",
                       static_cast<int>(connection->GetId()));
    connection->Destroy();
    connection.reset();
  }
  mConnections.clear();
  PCRealDebug::Print(
      PCRealDebug::Trace,
      "NetworkAdapter::~NetworkAdapter: Setting the Network Adapter Instance to NULL.");
  mpInstance = nullptr;
}

// URLs come by value, as the interface has it.
// NOLINTBEGIN(performance-unnecessary-value-param)

GUID NetworkAdapter::registerService(URL aURL, NetworkMessageCallback* aCallback,
                                     std::string const& aLocalInterfaceIP) {
  TraceScope trace("NetworkAdapter::registerService");
  TCAutoLock lock(mLock);
  reapConnections();
  std::string const key = aURL.toString();
  if (mRegistrations.contains(key)) {
    return GUID::nullGUID;
  }
  NetworkConnection* const connection = spawnMessageListener(aURL, aCallback, aLocalInterfaceIP);
  if (!connection) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "NetworkAdapter::registerService: Unable to spawnMessageListener!!");
    return GUID::nullGUID;
  }
  GUID const handle = GUID::createGUID();
  mRegistrations[key] = std::make_unique<NetworkAdapterRegistration>(
      NetworkAdapterRegistration{handle, connection, aCallback});
  return handle;
}

NetworkConnection* NetworkAdapter::spawnMessageListener(URL aURL, NetworkMessageCallback* aCallback,
                                                        std::string const& aLocalInterfaceIP) {
  TraceScope trace("NetworkAdapter::spawnMessageListener");
  TCAutoLock lock(mLock);
  if (!aLocalInterfaceIP.empty()) {
    PCRealDebug::Print(PCRealDebug::Trace,
                       "NetworkAdapter::spawnMessageListener: Local Interface IP found = %s.",
                       aLocalInterfaceIP.c_str());
  }
  std::string const protocol = aURL.getProtocol();
  auto connection = std::make_unique<NetworkConnection>(
      protocol, aURL.getDomainName(), aLocalInterfaceIP, aURL.getPort(), aCallback,
      protocol == "tcp" ? TCPListener : UDPHandler);
  if (!prepareListener(*connection, protocol)) {
    return nullptr;
  }
  if (!connection->Create("Quorl-NetworkAdapter(TCP/UDP)", 4096)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "NetworkAdapter::spawnMessageListener: Failed to create Listener thread.");
    connection->closeConnection();
    return nullptr;
  }
  mConnections.push_back(std::move(connection));
  return mConnections.back().get();
}

// Services come and go with the address of the set; what has ended need not be kept to the end.
void NetworkAdapter::reapConnections() {
  std::set<NetworkConnection const*> registered;
  for (auto const& [url, registration] : mRegistrations) {
    registered.insert(registration ? registration->mConnection : nullptr);
  }
  mConnections.remove_if([&](std::unique_ptr<NetworkConnection> const& aConnection) {
    return aConnection->isFinished() && !registered.contains(aConnection.get());
  });
}

void NetworkAdapter::unregisterService(GUID const& aHandle) {
  TraceScope trace("NetworkAdapter::unregisterService");
  TCAutoLock lock(mLock);
  for (auto entry = mRegistrations.begin(); entry != mRegistrations.end(); ++entry) {
    if (entry->second && entry->second->mHandle == aHandle) {
      if (entry->second->mConnection) {
        entry->second->mConnection->closeConnection();
      }
      mRegistrations.erase(entry);
      return;
    }
  }
  PCRealDebug::Print(PCRealDebug::Warning,
                     "NetworkAdapter::unregisterService: Registration not found!");
}

GUID NetworkAdapter::send(URL aURL, std::string const& aMessage,
                          std::string const& aLocalInterfaceIP, int aRepeat) {
  TraceScope trace("NetworkAdapter::send");
  if (!aLocalInterfaceIP.empty()) {
    PCRealDebug::Print(PCRealDebug::Trace, "NetworkAdapter::send: Local Interface IP found = %s.",
                       aLocalInterfaceIP.c_str());
  }
  std::string const protocol = aURL.getProtocol();
  NetworkConnection connection(protocol, aURL.getDomainName(), aLocalInterfaceIP, aURL.getPort(),
                               nullptr, OutgoingConnection);
  bool const sent =
      prepareSender(connection, protocol) && connection.sendMessage(aMessage, aRepeat);
  return sent ? GUID::createGUID() : GUID::nullGUID;
}

GUID NetworkAdapter::send(URL aURL, std::string const& aMessage,
                          std::string const& aLocalInterfaceIP, int aRepeat, SendCancel& aCancel) {
  TraceScope trace("NetworkAdapter::send");
  if (!aLocalInterfaceIP.empty()) {
    PCRealDebug::Print(PCRealDebug::Trace, "NetworkAdapter::send: Local Interface IP found = %s.",
                       aLocalInterfaceIP.c_str());
  }
  std::string const protocol = aURL.getProtocol();
  NetworkConnection connection(protocol, aURL.getDomainName(), aLocalInterfaceIP, aURL.getPort(),
                               nullptr, OutgoingConnection);
  SendCancel::Scope const scope(aCancel, connection);
  bool const sent = !aCancel.isCancelled() && prepareSender(connection, protocol) &&
                    connection.sendMessage(aMessage, aRepeat);
  return sent && !aCancel.isCancelled() ? GUID::createGUID() : GUID::nullGUID;
}

// NOLINTEND(performance-unnecessary-value-param)

void NetworkAdapter::terminate() {
  TraceScope trace("NetworkAdapter::terminate");
  TCAutoLock lock(mLock);
  for (auto& [url, registration] : mRegistrations) {
    if (!registration) {
      continue;
    }
    PCRealDebug::Print(PCRealDebug::Trace,
                       "NetworkAdapter::terminate: Found a dangling URL Registration '%s'. !!!!",
                       url.c_str());
    registration->mConnection->closeConnection();
    registration.reset();
  }
}

}  // namespace Zelv::Adapter
