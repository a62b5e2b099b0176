#pragma once

#include "apps/zelvctl/AnswerPrinter.h"
#include "apps/zelvctl/Errand.h"
#include "apps/zelvctl/SeenIds.h"

namespace ZelvCtl {

/// Carries out "command". run() throws std::runtime_error on what keeps it from that.
class CommandVerb {
 public:
  /// All arguments outlive the object.
  CommandVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut);

  /// Prints what the command returns.
  void run();

 private:
  void receive(std::string const& aMessage);

  std::string const mId;
  int mAnswers = 0;
  SeenIds mSeen;
  Errand mErrand;
  AnswerPrinter mPrinter;
};

}  // namespace ZelvCtl
