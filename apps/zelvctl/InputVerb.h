#pragma once

#include "apps/zelvctl/AnswerPrinter.h"
#include "apps/zelvctl/Errand.h"

namespace ZelvCtl {

/// Carries out "input". run() throws std::runtime_error on what keeps it from that.
class InputVerb {
 public:
  /// All arguments outlive the object.
  InputVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut);

  /// Sends an event for each value.
  void run();

 private:
  Errand mErrand;
  AnswerPrinter mPrinter;
};

}  // namespace ZelvCtl
