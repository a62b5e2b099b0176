#pragma once

#include <string>

namespace Zelv::Adapter {

/// The words for an errno value, for log lines.
std::string socketErrorText(int aErrno);

}  // namespace Zelv::Adapter
