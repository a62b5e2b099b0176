#include "zelv/infrastructure/XPathResult.h"

#include <algorithm>

namespace Zelv::Infrastructure {

void XPathResult::grow() {
  std::size_t const capacity = mCapacity * 4;
  auto many = std::make_unique<XPathItem[]>(capacity);
  std::copy(begin(), end(), many.get());
  mMany = std::move(many);
  mItems = mMany.get();
  mCapacity = capacity;
}

}  // namespace Zelv::Infrastructure
