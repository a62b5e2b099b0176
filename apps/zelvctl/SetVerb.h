#pragma once

#include "apps/zelvctl/AnswerPrinter.h"
#include "apps/zelvctl/Errand.h"

namespace ZelvCtl {

/// Carries out "set". run() throws std::runtime_error on what keeps it from that.
class SetVerb {
 public:
  /// All arguments outlive the object.
  SetVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut);

  /// Returns once the device has taken the new value; whether it could store it is not told.
  void run();

 private:
  Errand mErrand;
  AnswerPrinter mPrinter;
};

}  // namespace ZelvCtl
