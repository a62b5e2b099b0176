#pragma once

#include "zelv/platform/Export.h"

namespace Zelv {

/// What a requester wants to have back with each delivery; opaque.
///
/// The library keeps the pointer, hands it back unchanged to IBaseDataCallback::onData() and never
/// looks through it or deletes it; null is legal. An application derives its own class and keeps
/// the object alive as long as deliveries may come.
class ZELV_EXPORT ContextInformation {
 public:
  virtual ~ContextInformation();

 protected:
  ContextInformation() = default;
  ContextInformation(ContextInformation const&) = default;
  ContextInformation& operator=(ContextInformation const&) = default;
};

}  // namespace Zelv
