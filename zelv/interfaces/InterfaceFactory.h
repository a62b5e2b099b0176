#pragma once

#include "zelv/interfaces/IBase.h"
#include "zelv/platform/Export.h"

namespace Zelv {

/// The way into the library.
///
/// The first call MUST be made before other threads use the library, and terminate() after they
/// have stopped.
class ZELV_EXPORT InterfaceFactory {
 public:
  InterfaceFactory() = delete;

  /// Starts the system, unless it runs already. Everything happens on the calling thread;
  /// components are brought up before it returns.
  ///
  /// @return false when the start failed with a std::exception, which is logged; everything is then
  ///         stopped and deleted again. Other exceptions pass through.
  static bool initialize();

  /// The object that implements every interface; the one wanted is reached by dynamic_cast, which
  /// gives null for one that is not there. Starts the system when it does not run.
  ///
  /// @param aInterfaceID  not looked at: every identifier yields the same object.
  /// @return not owned, valid until terminate(); null when the start failed, as for initialize().
  static IBase* getInterface(GUID aInterfaceID);

  /// Stops the system and deletes it; every interface obtained before is invalid afterwards. Does
  /// nothing when it does not run. It can be started anew.
  static void terminate();
};

}  // namespace Zelv
