#include "zelv/interfaces/IBaseData.h"

namespace Zelv {

IBaseData::~IBaseData() = default;

}  // namespace Zelv
