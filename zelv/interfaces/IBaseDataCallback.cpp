#include "zelv/interfaces/IBaseDataCallback.h"

namespace Zelv {

IBaseDataCallback::~IBaseDataCallback() = default;

}  // namespace Zelv
