#include "zelv/interfaces/StatusInformation.h"

namespace Zelv {

StatusInformation::StatusInformation(std::string const& aStatusText) : mStatusText(aStatusText) {}

StatusInformation::StatusInformation(std::exception const& aException) : mException(aException) {}

StatusInformation::~StatusInformation() = default;

}  // namespace Zelv
