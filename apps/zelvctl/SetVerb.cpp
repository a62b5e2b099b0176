#include "apps/zelvctl/SetVerb.h"

#include <stdexcept>

#include "apps/zelvctl/DataMessages.h"

namespace ZelvCtl {

SetVerb::SetVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut)
    : mErrand(aOptions, aStopDescriptor), mPrinter(aOut, aOptions.json) {}

void SetVerb::run() {
  Options const& options = mErrand.options();
  Target const target = mErrand.find(Service::data());
  mErrand.deliver(
      target, DataMessages(mErrand.identity().id, "").set(options.path, options.values.front()));
  mPrinter.taken(options.path);
  if (mPrinter.isBroken()) {
    throw std::runtime_error("cannot write to standard output");
  }
}

}  // namespace ZelvCtl
