#include "zelv/interfaces/IDataProvider.h"

namespace Zelv {

IDataProvider::~IDataProvider() = default;

}  // namespace Zelv
