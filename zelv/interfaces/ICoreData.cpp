#include "zelv/interfaces/ICoreData.h"

namespace Zelv {

ICoreData::~ICoreData() = default;

}  // namespace Zelv
