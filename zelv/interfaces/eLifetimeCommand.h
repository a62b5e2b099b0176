#pragma once

namespace Zelv {

/// What a component is told about its lifetime. Used by number.
enum eLifetimeCommand : int {
  LIFETIME_INITIALISE = 0,  ///< create and load
  LIFETIME_START = 1,       ///< enter the running state
  LIFETIME_STOP = 2,        ///< leave the running state, back to the loaded state
  LIFETIME_TERMINATE = 3,   ///< unregister and release
};

}  // namespace Zelv
