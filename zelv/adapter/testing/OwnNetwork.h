#pragma once

#include "zelv/platform/fake/OwnNetwork.h"

namespace Zelv::Testing {

/// Put it before all that makes threads or sockets, as first member of a fixture.
using OwnNetwork = Platform::Fake::OwnNetwork;

}  // namespace Zelv::Testing
