#include "zelv/interfaces/IBase.h"

namespace Zelv {

std::string IBase::getName() {
  return mName;
}

void IBase::setName(std::string const& aName) {
  mName = aName;
}

IBase::~IBase() = default;

}  // namespace Zelv
