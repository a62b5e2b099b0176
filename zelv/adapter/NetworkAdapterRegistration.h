#pragma once

#include "zelv/infrastructure/GUID.h"
#include "zelv/interfaces/NetworkMessageCallback.h"

namespace Zelv::Adapter {

class NetworkConnection;

/// One registered service.
struct NetworkAdapterRegistration {
  Infrastructure::GUID mHandle;
  NetworkConnection* mConnection = nullptr;  ///< owned by the adapter's list
  NetworkMessageCallback* mCallback = nullptr;
};

}  // namespace Zelv::Adapter
