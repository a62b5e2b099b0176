#include "zelv/interfaces/IBaseCommandCallback.h"

namespace Zelv {

IBaseCommandCallback::~IBaseCommandCallback() = default;

}  // namespace Zelv
