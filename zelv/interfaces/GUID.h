#pragma once

#include "zelv/infrastructure/GUID.h"

namespace Zelv {

/// The 128-bit identifier of transactions, subscriptions, timers, devices and handlers, which
/// occurs in nearly every interface.
using Infrastructure::GUID;

}  // namespace Zelv
