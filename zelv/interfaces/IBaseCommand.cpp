#include "zelv/interfaces/IBaseCommand.h"

namespace Zelv {

IBaseCommand::~IBaseCommand() = default;

}  // namespace Zelv
