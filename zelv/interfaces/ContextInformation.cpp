#include "zelv/interfaces/ContextInformation.h"

namespace Zelv {

ContextInformation::~ContextInformation() = default;

}  // namespace Zelv
