#pragma once

#include <string>

#include "zelv/interfaces/GUID.h"
#include "zelv/platform/Export.h"

namespace Zelv {

class AssetRequestHandler;

/// Answers requests for asset files.
class ZELV_EXPORT IAssetProvider {
 public:
  /// Turns one request into a series of parts on the open response of aHandler. Called on the
  /// thread of the connection.
  ///
  /// @param aRequest        the request, an XML element.
  /// @param aHandler        sends the parts; not owned, valid until the call returns.
  /// @param aTransactionID  not used.
  /// @return 0 on success, -1 otherwise; the caller does not look at it.
  virtual int handleAssetRequest(std::string const& aRequest, AssetRequestHandler* aHandler,
                                 GUID aTransactionID) = 0;

 protected:
  /// Nobody deletes a provider through this interface, which has exactly one virtual operation.
  ~IAssetProvider() = default;
};

}  // namespace Zelv
