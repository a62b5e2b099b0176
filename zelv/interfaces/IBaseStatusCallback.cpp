#include "zelv/interfaces/IBaseStatusCallback.h"

namespace Zelv {

IBaseStatusCallback::~IBaseStatusCallback() = default;

}  // namespace Zelv
