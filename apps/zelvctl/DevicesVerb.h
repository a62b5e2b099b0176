#pragma once

#include <chrono>

#include "apps/StopSignal.h"
#include "apps/zelvctl/Bell.h"
#include "apps/zelvctl/Options.h"
#include "apps/zelvctl/PhoneMessages.h"
#include "apps/zelvctl/Printer.h"

namespace ZelvCtl {

/// Carries out "devices". Both operations throw std::runtime_error on what keeps them from it.
class DevicesVerb {
 public:
  /// All arguments outlive the object.
  DevicesVerb(Options const& aOptions, ZelvApps::StopSignal const& aStop);

  /// Prints who is there.
  void list();

  /// Prints who comes and goes until the signal.
  void watch();

 private:
  using Clock = std::chrono::steady_clock;

  bool isStoppedWithin(Clock::duration aTime);
  void checkOutput() const;

  Options const& mOptions;
  ZelvApps::StopSignal const& mStop;
  Identity const mIdentity;
  Bell mBell;
  Printer mPrinter;
};

}  // namespace ZelvCtl
