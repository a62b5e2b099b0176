#pragma once

namespace Zelv::Platform::Fake {

/// Takes away every fault, script and record of all fakes.
void ResetFakes();

}  // namespace Zelv::Platform::Fake
