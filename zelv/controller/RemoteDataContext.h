#pragma once

#include <string>

#include "zelv/interfaces/ContextInformation.h"
#include "zelv/interfaces/GUID.h"

namespace Zelv::Controller {

/// What the remote data controller hands along with a request to its own tree. It knows its own
/// kind, since the path that comes back with it was chosen by a stranger.
///
/// Shared: the table holds it as long as an answer may find it, and whoever works with it holds it
/// meanwhile. All but the two last members are constant once it is in the table.
class RemoteDataContext : public ContextInformation {
 public:
  enum class Kind {
    Request,       ///< a GetDataContext: this device asks another one
    Subscription,  ///< a RemoteDataSubscriptionContext: another device asks this one
  };

  RemoteDataContext(Kind aKind, std::string const& aLocalXPath, bool aAnsweredOnce)
      : kind(aKind), localXPath(aLocalXPath), answeredOnce(aAnsweredOnce) {}

  Kind const kind;
  /// What is read in the tree of this device.
  std::string const localXPath;
  /// True when one answer, or one failure, is all there will be.
  bool const answeredOnce;

  /// Returned by the local request. Null until that has returned, while its answer may be there
  /// already. Guarded by the lock of the table.
  GUID localId = GUID::nullGUID;
};

}  // namespace Zelv::Controller
