#pragma once

#include <unistd.h>

#include <iostream>

#include "apps/zelvctl/AssetPrinter.h"
#include "apps/zelvctl/Errand.h"
#include "apps/zelvctl/Failures.h"
#include "apps/zelvctl/HttpPost.h"

namespace ZelvCtl {

/// Carries out "asset". run() throws std::runtime_error on what keeps it from that.
class AssetVerb {
 public:
  /// @param aErrors    where failures go but the last, and a progress bar if that is a terminal.
  ///
  /// All arguments outlive the object.
  AssetVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut,
            std::ostream& aErrors = std::cerr, bool aIsTerminal = ::isatty(STDERR_FILENO) == 1);

  /// Fetches what was asked for, or lists it.
  void run();

 private:
  void fetch(Failures& aFailures);
  void await(HttpPost const& aPost, Target const& aTarget);

  Errand mErrand;
  AssetPrinter mPrinter;
  std::ostream& mErrors;
  bool const mIsTerminal;
};

}  // namespace ZelvCtl
