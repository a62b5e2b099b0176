#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>

#include "zelv/adapter/NetworkAdapterRegistration.h"
#include "zelv/infrastructure/GUID.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv::Adapter {

class SendCancel;

/// The one place of the process through which components listen and send. The protocol of a URL,
/// "tcp" or "udp", decides the transport.
class NetworkAdapter {
 public:
  /// The singleton, made by the first call. No lock: Core makes that call before any thread exists.
  static NetworkAdapter* getInstance();

  /// Waits for the threads of all connections.
  virtual ~NetworkAdapter();
  NetworkAdapter(NetworkAdapter const&) = delete;
  NetworkAdapter& operator=(NetworkAdapter const&) = delete;

  /// Listens at a URL, on every address of the machine.
  ///
  /// @param aCallback          called on a thread of the connection, for TCP possibly on several
  ///                           at a time; not owned, MUST live until this adapter is deleted.
  /// @param aLocalInterfaceIP  interface for multicast; empty lets the kernel decide.
  /// @return the handle; the null identifier when the URL is registered already or cannot be
  /// served.
  Infrastructure::GUID registerService(Infrastructure::URL aURL, NetworkMessageCallback* aCallback,
                                       std::string const& aLocalInterfaceIP);

  /// Stops listening. The connection's thread ends by itself.
  void unregisterService(Infrastructure::GUID const& aHandle);

  /// Sends one message, on the calling thread. On TCP that may take the 3 seconds of connecting and
  /// the 3 seconds of waiting for the acknowledgement.
  ///
  /// @param aRepeat  how many datagrams go out on UDP; TCP takes no notice.
  /// @return a new identifier; the null identifier on failure.
  Infrastructure::GUID send(Infrastructure::URL aURL, std::string const& aMessage,
                            std::string const& aLocalInterfaceIP, int aRepeat);

  /// As the other, for a send that aCancel may end at any time. A send that was cancelled has
  /// failed, although the text may have arrived.
  Infrastructure::GUID send(Infrastructure::URL aURL, std::string const& aMessage,
                            std::string const& aLocalInterfaceIP, int aRepeat, SendCancel& aCancel);

  /// Closes all services that are left.
  void terminate();

 private:
  using Registration = std::unique_ptr<NetworkAdapterRegistration>;

  NetworkAdapter() = default;

  NetworkConnection* spawnMessageListener(Infrastructure::URL aURL,
                                          NetworkMessageCallback* aCallback,
                                          std::string const& aLocalInterfaceIP);
  void reapConnections();

  PCMutex mLock;
  std::map<std::string, Registration> mRegistrations ZELV_GUARDED_BY(mLock);
  std::list<std::unique_ptr<NetworkConnection>> mConnections ZELV_GUARDED_BY(mLock);

  static NetworkAdapter* mpInstance;
};

}  // namespace Zelv::Adapter
